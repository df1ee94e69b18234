#include "distributed/diagnostics.h"

#include <fstream>

#include "platform/clock.h"

namespace valku {

void appendDiagnostic(const char* file, const std::string& text) {
    std::ofstream(file, std::ios::app) << text + "\n" << std::flush;
}

std::string diagnosticTime() {
    return std::to_string(timeOfDay().seconds);
}

}  // namespace valku
