#include "tablemaker/commands.h"

#include "platform/raw_io.h"
#include "tablebases/registration.h"

namespace valku {

int reportFault(const std::string& text) {
    writeErrorOutput(text + "\n");
    return 1;
}

std::string movesText(int moves) {
    return std::to_string(moves) + (moves == 1 ? " move" : " moves");
}

bool registerTables(const std::string& directory) {
    try {
        tbStartUp(directory);
        return true;
    } catch (const Fault& fault) {
        writeStandardOutput(fault.text() + "\n");
        return false;
    }
}

}  // namespace valku
