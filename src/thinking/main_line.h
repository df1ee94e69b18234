#pragma once

#include "search/search_types.h"

namespace valku {

constexpr i32 maxIterations = 255;  // plies; deeper limits mean this one

// Reports a main line and makes it the current one: the only place where bestMove, mainLine, lastScore,
// lastDepth and secondsAtLastReport change during a search. Thinking thread.
void sendMainLine(i32 depth, Move move, i32 score, const Line& line, bool failHigh);

}  // namespace valku
