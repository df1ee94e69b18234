#pragma once

#include "search/search_types.h"

// The job of one node: a window and a depth, and what a search does at its two ends. On searchPosition, by
// the thread that searches.

namespace valku {

// The deepest job that one process gives another; deeper ones have no place in the hash table.
constexpr i32 deepestJob = 253;  // quarter plies

// From the view of the side to move at the node.
struct SearchJob {
    i32 ncount = 1;  // ply of the node
    i32 alpha = 0;
    i32 beta = 0;
    i32 distance = 0;  // quarter plies
    bool zws = false;  // zero window (beta - 1, beta)
};

// Both sides' mobility sums into frame 1, crosswise as the node at ply 1 takes them over, and mobilityBalance
// from them.
void computeRootMobility();

// The start of every job: root mobility, and no killers from the root move before.
void clearSearchTables();

// Sets the in-check flag of ply 0, the counters and the per-ply tables.
void beginJob();

// Searches the node. `allowSplit` is true in a process that has local clients.
i32 runEntry(const SearchJob& job, bool allowSplit);

// The counters, and the line read back from the table, of a finished job.
void completeResult(SearchResult& result, i32 value);

}  // namespace valku
