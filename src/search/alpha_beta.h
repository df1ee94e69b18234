#pragma once

#include <cmath>

#include "search/search_types.h"
#include "search/thinking_state.h"

// The nodes of the tree above the horizon, on searchPosition and searchFrames. Fail-soft scores from the side
// to move's view; depths in quarter plies; stopValue after a stop.

namespace valku {

// Open window, alpha below beta.
i32 alphaBeta(int ply, i32 alpha, i32 beta, i32 depth);

// Zero window (beta - 1, beta), depth 5 or more.
i32 alphaBetaZws(int ply, i32 beta, i32 depth);

// Zero window at the last full ply: all moves in stages, each answered by quiescence.
i32 frontierZws(int ply, i32 beta);

// The same nodes for a process that has clients: children of these depths and more are not searched here but
// raced over all of them. Few such nodes are entered in a second; their speed does not matter.
constexpr i32 openRaceDepth = 29;
constexpr i32 zwsRaceDepth = 33;
i32 alphaBetaSplit(int ply, i32 alpha, i32 beta, i32 depth);
i32 alphaBetaZwsSplit(int ply, i32 beta, i32 depth);

// A race at `ply` is worth its while for the first 2 to the power of `ply` seconds of a search; later only
// nodes further down are raced.
inline bool isTooLateToRace(int ply) {
    return elapsedSeconds() > std::ldexp(1.0, ply);
}

}  // namespace valku
