#pragma once

#include "chess/position.h"

// What the search knows of endgame tables. The tables themselves stand above the search and are handed in at
// start-up.

namespace valku {

// 1 and a score from the side to move's view, or 0 if the position has no value. `ply` is counted from the
// root.
using TablebaseProbe = int (*)(int ply, i32* score, const Position& position);

extern TablebaseProbe tablebaseProbe;

extern i32 largestTbMen;  // men of the largest ending on hand, kings included; 0 without tables
extern i32 TBdistance;    // plies of remaining depth from which on a node may probe

}  // namespace valku
