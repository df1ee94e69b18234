#pragma once

#include <bit>

#include "chess/types.h"
#include "tablebases/table_classes.h"

// Where men go on a board of 64 squares (rank * 8 + file) whose sets are bit masks.

namespace valku {

constexpr u64 bitOf(int square) {
    return u64{1} << square;
}

template <class Use>
void forEachSquare(u64 squares, Use use) {
    for (; squares; squares &= squares - 1) use(std::countr_zero(squares));
}

u64 kingReach(int from);

// What a pawn of the side attacks. The pawns of side 0 go up the board.
u64 pawnReach(int side, int from);

// What any other man attacks, up to and with the first man in its way.
u64 pieceReach(TbType type, int from, u64 occupied);

constexpr int pawnStep(int side) {
    return side == 0 ? 8 : -8;
}

// The rank as the side sees it, 0 to 7.
constexpr int rankSeenBy(int side, int square) {
    return side == 0 ? square >> 3 : 7 - (square >> 3);
}

}  // namespace valku
