#pragma once

#include "search/search_types.h"

namespace valku {

// Has the node of searchPosition at `ncount` raced by the standard search process and all local clients.
// Window, score and depth (quarter plies) as in the node functions. searchPosition is left as it was; the
// nodes of all racers are added to nodeCount. On the thread that searches, in a process with local clients.
i32 splitSearch(i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws);

}  // namespace valku
