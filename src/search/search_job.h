#pragma once

#include "search/search_types.h"

// The job of a search process: one node of searchPosition with a window and a depth. All functions run on the
// searching thread.

namespace valku {

// The deepest job that one process gives another, in quarter plies: the depth bytes of the transposition
// table have no room for more.
constexpr i32 deepestJob = 253;

// Scores are from the view of the side to move at the node.
struct SearchJob {
    i32 ncount = 1;  // ply of the node
    i32 alpha = 0;
    i32 beta = 0;
    i32 distance = 0;  // quarter plies
    bool zws = false;  // zero window (beta - 1, beta)
};

// Counts both sides' mobility into frame 1, crosswise as the node at ply 1 takes it over, and sets
// mobilityBalance.
void computeRootMobility();

// Sets the in-check flag of ply 0, clears the counters and prepares the per-ply tables.
void beginJob();

// Searches the node. `allowSplit` is true in a process that has local clients.
i32 runEntry(const SearchJob& job, bool allowSplit);

// Fills in the counters of a finished job and its principal variation from the transposition table.
void completeResult(SearchResult& result, i32 value);

}  // namespace valku
