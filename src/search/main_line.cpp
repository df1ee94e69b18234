#include "search/main_line.h"

#include "search/search_ports.h"
#include "search/thinking_state.h"

namespace valku {

void sendMainLine(i32 depth, Move move, i32 score, const Line& line, bool failHigh) {
    lastOutputTime = steadySeconds();
    lastScore = score;
    lastDepth = depth;
    searchPorts.observer->mainLineFound(depth, score, line, failHigh);
    bestMove = move;
    mainLine = line;
}

}  // namespace valku
