#pragma once

#include "chess/position.h"
#include "search/search_types.h"

// The two places at which the processes of an engine race for one node. Windows and results are from the view
// of the side to move at the node, depths in quarter plies.

namespace valku {

// The job of a root move: `position` has the move made. By the root search process and all remote clients if
// the job is large enough, else by the root search process alone, on the caller's thread. On the thinking
// thread.
SearchResult splitRootSearch(const Position& position, i32 alpha, i32 beta, i32 depth, bool zws);

// The node of searchPosition at the ply `ncount`, raced by the standard search process and all local clients;
// the score. searchPosition is left as it was; the nodes of all racers are added to nodeCount. On the thread
// that searches, in a process with local clients.
i32 splitSearch(i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws);

}  // namespace valku
