#pragma once

#include "chess/position.h"
#include "tablebases/table_entry.h"

namespace valku {

// A stored value is the distance to mate in moves, from the side to move's point of view: a mate in n moves
// is 32767 - n, being mated in n moves n - 32766, and a draw 0.
constexpr i32 noTableValue = 32767;
constexpr i32 matedTableValue = -32766;

// Of a value other than a draw.
constexpr i32 movesToMate(i32 value) {
    return value > 0 ? noTableValue - value : value - matedTableValue;
}

// 1 and the score in hundredths of a pawn from the side to move's point of view, or 0 if the position has no
// value. `ply` is counted from the root in plies: a mate scores 30000 less the plies from the root to it. On
// the searching thread only.
int probeTablebases(int ply, i32* score, const Position& position);

// The stored value of the position; noTableValue if there is none or the side to move may capture en passant.
// On the same thread.
i32 probeTableValue(const Position& position);

// The stored value of an entry; noTableValue if it has none, or its file is missing or fails. On the same
// thread.
i32 readTableValue(int tbClass, int side, u64 index);

}  // namespace valku
