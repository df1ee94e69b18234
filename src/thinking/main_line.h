#pragma once

#include "search/search_types.h"

// What the search has found so far: the main line, which is the principal variation of the last finished root
// search, and the sums over its jobs. Written by the thinking thread; while that is idle, by the command
// thread. Read by the observer's reports, and by others when the search has ended.

namespace valku {

constexpr i32 maxIterations = 255;  // plies; deeper limits mean this one

// What the last main-line output said.
inline Move bestMove = nullMove;
inline Line mainLine{};  // moves[0] is bestMove, moves[1] the expected reply
inline i32 lastScore = 0;
inline i32 lastDepth = 0;

// Sums over the jobs of the current search.
inline u64 totalNodes = 0;
inline i32 totalSelDepth = 0;
inline u32 totalTbProbes = 0;
inline u32 totalTbHits = 0;

// The start of the search, in the seconds of steadySeconds().
inline double startTime = 0;

// At the start of a search: no line, no nodes, and the clock at zero.
void beginMainLine();

// Reports a main line and makes it the current one: the only place where bestMove, mainLine, lastScore and
// lastDepth change by a report. Scores are from the root's side to move. Thinking thread.
void sendMainLine(i32 depth, Move move, i32 score, const Line& line, bool failHigh);

// Keeps the main line of a finished iteration.
void rememberFinishedLine();

// Among the main lines of the last search's finished iterations the newest one that begins with this move and
// has a reply; null if there is none.
const Line* findFinishedLine(Move firstMove);

}  // namespace valku
