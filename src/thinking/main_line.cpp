#include "thinking/main_line.h"

#include "search/split_port.h"
#include "thinking/search_observer.h"
#include "thinking/thinking_state.h"

namespace valku {

void sendMainLine(i32 depth, Move move, i32 score, const Line& line, bool failHigh) {
    secondsAtLastReport = steadySeconds() - startTime;
    lastScore = score;
    lastDepth = depth;
    searchObserver->mainLineFound(depth, score, line, failHigh);
    bestMove = move;
    mainLine = line;
}

}  // namespace valku
