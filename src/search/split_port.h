#pragma once

#include "search/search_types.h"

// What a deep node asks of the search processes above it.

namespace valku {

// Has the node of searchPosition at `ply` searched by whichever search process is the fastest: scores and
// depth are those of the node functions. Handed in at start-up; only called in a process with clients.
using SplitSearch = i32 (*)(i32 ply, i32 alpha, i32 beta, i32 depth, bool zws);

inline SplitSearch splitSearchPort = nullptr;

// Seconds between the start of the search and its last report; they do not run in between. Written by the
// thinking thread, which waits while another thread searches.
inline double elapsedSeconds = 0;

}  // namespace valku
