#include "shell/settings_file.h"

#include <fstream>
#include <string>

#include "eval/weights.h"
#include "platform/raw_io.h"
#include "protocol/parameter_tables.h"
#include "protocol/parameters.h"

namespace valku {

namespace {

constexpr std::size_t longestLine = 999;

}  // namespace

void loadSettings() {
    std::ifstream file("settings.ini");
    std::string line;
    while (std::getline(file, line)) {
        for (std::size_t at = 0; at < line.size(); at += longestLine)
            applySettingsLine(line.substr(at, longestLine));
    }
    updateDerivedMaterial();
}

void printSettings() {
    initParameters();
    writeStandardOutput(parameterTables());
}

}  // namespace valku
