#pragma once

#include "chess/types.h"
#include "tablebases/board64.h"
#include "tablebases/material_classes.h"

// The squares that men attack, on the board of board64.h.

namespace valku {

u64 kingAttacks(int from);

// Of a pawn of the side. The pawns of side 0 go up the board.
u64 pawnAttacks(int side, int from);

// Of any other man, up to and with the first man in its way.
u64 pieceAttacks(TbType type, int from, u64 occupied);

constexpr int pawnStep(int side) {
    return side == 0 ? 8 : -8;
}

// The rank from the side's point of view, 0 to 7.
constexpr int relativeRank64(int side, int square) {
    return side == 0 ? rank64(square) : 7 - rank64(square);
}

}  // namespace valku
