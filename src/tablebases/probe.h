#pragma once

#include "chess/position.h"
#include "tablebases/table_entry.h"

namespace valku {

// A stored value: 0 is a draw, 32767 - n a mate in n moves and n - 32766 being mated in n moves, from the
// view of the side to move.
constexpr i32 noTableValue = 32767;

// 1 and the score from the side to move's view, or 0 if the position has no value. `ply` is counted from the
// root. Only on the searching thread.
int probeTablebases(int ply, i32* score, const Position& position);

// The stored value of the position; noTableValue if there is none, or the side to move may capture en
// passant.
i32 probeTableValue(const Position& position);

// The stored value of an entry; noTableValue for an entry without one, a missing or a failing file.
i32 readTableValue(int tbClass, int side, u64 index);

}  // namespace valku
