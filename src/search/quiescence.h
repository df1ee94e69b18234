#pragma once

#include "search/search_types.h"

// Quiescence search (https://www.chessprogramming.org/Quiescence_Search), the nodes below the depth of the
// main search: captures and queen promotions only. A side in check may stand pat; mate, stalemate and draws
// by rule are not seen. Fail-soft scores from the side to move's view, or stopValue after a stop. Searching
// thread only.

namespace valku {

// Zero window (beta - 1, beta): captures that pass the static exchange evaluation.
i32 quiesceZws(int ply, i32 beta);

// Open window: all captures that pass delta pruning, and the hash move. `qDepth` starts at 0 and falls by 1
// per ply.
i32 quiescePv(int ply, i32 alpha, i32 beta, int qDepth);

}  // namespace valku
