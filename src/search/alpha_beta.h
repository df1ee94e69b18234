#pragma once

#include "search/search_types.h"

// The nodes of the tree above the horizon, on searchPosition and searchFrames. Fail-soft scores from the side
// to move's view; depths in quarter plies; stopValue after a stop.

namespace valku {

// Open window, alpha below beta.
i32 alphaBeta(int ply, i32 alpha, i32 beta, i32 depth);

// Zero window (beta - 1, beta), depth 5 or more.
i32 alphaBetaZws(int ply, i32 beta, i32 depth);

// Zero window at the last full ply: all moves in stages, each answered by quiescence.
i32 frontierZws(int ply, i32 beta);

// The entries through which a search process begins. With `allowSplit`, in a process that has clients, deep
// nodes are raced over all of them instead of being searched here.
i32 alphaBetaEntry(i32 ncount, i32 alpha, i32 beta, i32 distance, bool allowSplit);
i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit);

}  // namespace valku
