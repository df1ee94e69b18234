#include "tools/tool_commands.h"

#include <algorithm>
#include <string>

#include "tools/benchmark.h"
#include "tools/engine_labels.h"
#include "tools/eval_ranges.h"
#include "tools/game_statistics.h"
#include "tools/learn_matrix.h"
#include "tools/miss_evals.h"
#include "tools/quiet_positions.h"

namespace valku {

namespace {

// A name may hold blanks; those before it part it from the command.
std::string fileName(std::string_view arguments) {
    return std::string(arguments.substr(std::min(arguments.find_first_not_of(' '), arguments.size())));
}

}  // namespace

ToolPort toolCommands() {
    return {
        .benchmark = benchmark,
        .benchFromFile = benchFromFile,
        .testEval = [](std::string_view arguments) { testEvalAgainstFile(fileName(arguments)); },
        .gameStats = [](std::string_view arguments) { gameStats(fileName(arguments)); },
        .checkMissEvals = [](std::string_view arguments) { checkMissEvals(fileName(arguments)); },
        .generateTestposEval = [](std::string_view arguments) { generateTestposEval(fileName(arguments)); },
        .callEngine = callEngine,
        .learnFileToMatrix = learnFileToMatrix,
    };
}

}  // namespace valku
