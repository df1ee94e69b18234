#include "tools/tool_commands.h"

#include <string>

#include "platform/text_scan.h"
#include "protocol/engine_services.h"
#include "tools/benchmark.h"
#include "tools/engine_labels.h"
#include "tools/eval_ranges.h"
#include "tools/game_statistics.h"
#include "tools/learn_matrix.h"
#include "tools/miss_evals.h"
#include "tools/quiet_positions.h"

namespace valku {

namespace {

// A name may hold blanks; those before it separate it from the command.
std::string fileName(std::string_view arguments) {
    skipSeparators(arguments);
    return std::string(arguments);
}

// For tools that end the engine when they are done.
void quitIf(bool ended) {
    if (ended) engineServices->quit();
}

// clang-format off
constexpr Command commands[] = {
    {"testeval", Match::prefix, [](std::string_view rest) { testEvalAgainstFile(fileName(rest)); }},
    {"benchmark", Match::prefix, benchmark},
    {"benchfromfile", Match::prefix, [](std::string_view rest) { quitIf(benchFromFile(rest)); }},
    {"checkMissEvals", Match::prefix, [](std::string_view rest) { quitIf(checkMissEvals(fileName(rest))); }},
    {"gameStats", Match::prefix, [](std::string_view rest) { gameStats(fileName(rest)); }},
    {"generateTestposEval", Match::prefix, [](std::string_view rest) { generateTestposEval(fileName(rest)); }},
    {"callengine", Match::prefix, callEngine},
    {"learnfile2matrix", Match::prefix, learnFileToMatrix},
};
// clang-format on

}  // namespace

std::span<const Command> toolCommands() {
    return commands;
}

}  // namespace valku
