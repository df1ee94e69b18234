#include <exception>
#include <new>
#include <string_view>

#include "platform/process.h"
#include "platform/raw_io.h"
#include "shell/command_line.h"
#include "shell/engine.h"
#include "shell/settings_file.h"

namespace {

// For what nobody has caught, on whichever thread. There may be no memory left, so nothing is composed.
[[noreturn]] void endWithOneLine() {
    constexpr int patienceMs = 1000;
    std::string_view reason = "an unknown fault";
    try {
        if (const std::exception_ptr fault = std::current_exception()) std::rethrow_exception(fault);
    } catch (const std::bad_alloc&) {
        reason = "not enough memory";
    } catch (const std::exception& fault) {
        reason = fault.what();
    } catch (...) {
    }
    for (const std::string_view part : {std::string_view("valku: "), reason, std::string_view("\n")})
        valku::writeErrorOutput(part, patienceMs);
    valku::exitProcess(1);
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(endWithOneLine);
    const valku::CommandLine commandLine = valku::parseCommandLine(argc, argv);
    if (commandLine.printsSettings) {
        valku::printSettings();
        return 0;
    }
    valku::engineMain(commandLine);
}
