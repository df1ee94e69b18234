#pragma once

#include "chess/position.h"

// The two calls that go up from the search to folders above it, set once at start-up, and beside each what
// decides when it is made.

namespace valku {

// Has the node of searchPosition at `ply` searched by whichever search process is the fastest; scores and
// depth are those of the node functions. Called only in a process with clients.
using SplitSearch = i32 (*)(i32 ply, i32 alpha, i32 beta, i32 depth, bool zws);
inline SplitSearch splitSearchPort = nullptr;

// Seconds from the start of the search to its last report; constant in between. Written by the thinking
// thread, which waits while another thread searches.
inline double elapsedSeconds = 0;

// 1 and a score from the side to move's view, or 0 if the endgame tables have no value for the position.
// `ply` is counted from the root. Called only for positions of at most largestTbMen men.
using TablebaseProbe = int (*)(int ply, i32* score, const Position& position);
inline TablebaseProbe tablebaseProbe = nullptr;

// Written by the command thread while no search runs.
inline i32 largestTbMen = 0;  // men of the largest ending available, kings included; 0 without tables
inline i32 TBdistance = 8;    // a setting: plies of remaining depth from which on a node may probe

}  // namespace valku
