#include "platform/long_command.h"

#include <string_view>

#include "platform/raw_io.h"
#include "platform/shut_down.h"

namespace valku {

namespace {

constexpr std::string_view stopWords[] = {"?", "stop", "quit"};

bool watching = false;

}  // namespace

LongCommand::LongCommand() {
    watching = true;
    watchStandardInput(stopWords, "quit");
}

LongCommand::~LongCommand() {
    watching = false;
}

bool commandStopped() {
    return shutDownBegun || (watching && standardInputHasBrought());
}

}  // namespace valku
