#pragma once

#include "chess/position.h"
#include "search/search_types.h"

namespace valku {

// Reads the line behind `position` back from the hash table: at most 41 moves, closed by 0. It ends at the
// first entry without a lower-bound move, at a move that is not playable, and where a position comes round a
// second time. `position` is copied.
void rebuildPv(const Position& position, Line& pv);

}  // namespace valku
