#pragma once

#include "chess/types.h"
#include "tablebases/material_classes.h"

// From a position to the number of its entry in the table (its index), and back. Nothing here allocates;
// after initIndexLayouts any thread may call it.

namespace valku {

constexpr u64 noIndex = ~u64{0};

// The entry of a position of the class with `side` to move (0: the first-named). `inverted`: the pawns of the
// first-named side go down the board. The men are those of the class, on different squares. noIndex if the
// kings touch, the side to move gives a contact check, or a pawn stands on the first or last rank.
//
// Without pawns a position and its reflections share one index, unless both kings stand on a long diagonal:
// then the reflection in it has another index, and both are in use.
u64 tableIndex(int tbClass, int side, const TbMen& first, const TbMen& second, bool inverted);

// The reverse, with the pawns of the first-named side going up. False for an index that no placement with all
// men on different squares has, among them those of the en passant tail. Men of a type come in rising order
// of their digits.
bool squaresOfIndex(int tbClass, int side, u64 index, TbMen& first, TbMen& second);

}  // namespace valku
