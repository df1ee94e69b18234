#include "search/long_command.h"

#include <string_view>

#include "platform/raw_io.h"
#include "search/process_state.h"
#include "search/search_control.h"

namespace valku {

namespace {

constexpr std::string_view stopWords[] = {"?", "stop", "quit"};

bool watching = false;

}  // namespace

// The input of a client is not that of a person.
LongCommand::LongCommand() {
    watching = processRole == roleRoot;
    if (watching) watchStandardInput(stopWords, "quit");
}

LongCommand::~LongCommand() {
    watching = false;
}

bool commandStopped() {
    return shutDownBegun || (watching && standardInputHasBrought());
}

}  // namespace valku
