#pragma once

#include "search/search_types.h"

namespace valku {

// The deepest job that one process gives another; deeper ones have no place in the hash table.
constexpr i32 deepestJob = 253;  // quarter plies

// A window and a depth, from the view of the side to move at the node.
struct SearchJob {
    i32 ncount = 1;  // ply of the node
    i32 alpha = 0;
    i32 beta = 0;
    i32 distance = 0;  // quarter plies
    bool zws = false;  // zero window (beta - 1, beta)
};

// The entries through which a search process begins, on searchPosition. `allowSplit` is true in a process
// that has local clients.
i32 alphaBetaEntry(i32 ncount, i32 alpha, i32 beta, i32 distance, bool allowSplit);
i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit);

// The entry that fits the job.
i32 runEntry(const SearchJob& job, bool allowSplit);

// Sets the in-check flag of ply 0, the counters and the per-ply tables for a job on searchPosition.
void beginJob();

// The counters, and the line read back from the table, behind a finished job.
void completeResult(SearchResult& result, i32 value);

}  // namespace valku
