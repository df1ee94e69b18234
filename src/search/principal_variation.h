#pragma once

#include "chess/position.h"
#include "search/search_types.h"

namespace valku {

// Reads the principal variation after `position` back from the transposition table
// (https://www.chessprogramming.org/Principal_Variation): at most 41 moves, ended by 0. It stops at the first
// entry without a lower-bound move, at a move that cannot be played, and when a position repeats.
void rebuildPv(const Position& position, Line& pv);

}  // namespace valku
