#pragma once

#include "search/search_types.h"

// The nodes of the main search, on searchPosition and searchFrames: a principal variation search
// (https://www.chessprogramming.org/Principal_Variation_Search). Fail-soft scores from the side to move's
// view, or stopValue after a stop; depths in quarter plies. Searching thread only.

namespace valku {

// Open window, alpha below beta.
i32 alphaBeta(int ply, i32 alpha, i32 beta, i32 depth);

// Zero window (beta - 1, beta), depth above frontierDepth.
i32 alphaBetaZws(int ply, i32 beta, i32 depth);

// Zero window at the last full ply: all moves in stages, each answered by quiescence search.
i32 frontierZws(int ply, i32 beta);

// Where a search process starts: the node at ply `ncount` with the depth `distance`. With `allowSplit`, in a
// process that has clients, deep nodes are raced over all of them instead of being searched here.
i32 alphaBetaEntry(i32 ncount, i32 alpha, i32 beta, i32 distance, bool allowSplit);
i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit);

}  // namespace valku
