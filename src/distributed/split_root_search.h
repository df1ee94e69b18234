#pragma once

#include "chess/position.h"
#include "search/search_types.h"

namespace valku {

// Runs the job of a root move: `position` has the move made, window and result are from the view of the side
// to move there, `depth` is in quarter plies. It runs on the caller's thread, the thinking thread.
SearchResult splitRootSearch(const Position& position, i32 alpha, i32 beta, i32 depth, bool zws);

}  // namespace valku
