#pragma once

#include <array>
#include <vector>

#include "chess/types.h"

// What every numbering of positions is made of: symmetries of the board, pairs of kings, squares beside a
// king. Squares are 0 to 63: rank * 8 + file.

namespace valku {

constexpr int tbSquares = 64;

constexpr int file64(u8 square) {
    return square & 7;
}
constexpr int rank64(u8 square) {
    return square >> 3;
}

// Symmetries, to be applied to a square by exclusive or.
constexpr u8 mirrorFiles = 7;
constexpr u8 turnBoard = 56;

// The symmetry that brings the square to files a to d, and the one that brings it to a1 to d4.
constexpr u8 foldFile(u8 square) {
    return file64(square) >= 4 ? mirrorFiles : 0;
}
constexpr u8 foldBoth(u8 square) {
    return static_cast<u8>(foldFile(square) | (rank64(square) >= 4 ? turnBoard : 0));
}
constexpr u8 transposeSquare(u8 square) {
    return static_cast<u8>(file64(square) * 8 + rank64(square));
}

// Without pawns the king of the side to move is brought to a1, b1, c1, d1, b2, c2, d2, c3, d3 or d4, and if
// it stands on the diagonal the other one not above it.
constexpr bool isFoldedPawnless(u8 own, u8 other) {
    if (file64(own) >= 4 || rank64(own) > file64(own)) return false;
    return file64(own) != rank64(own) || file64(other) >= rank64(other);
}

struct KingSquares {
    u8 own, other;
};

constexpr u16 noKingPair = 4000;  // kings on one square or side by side, or not folded

// The squares of two kings that stand apart, numbered: own king of the side to move first.
struct KingPairs {
    u16 number[tbSquares][tbSquares];
    std::vector<KingSquares> squares;  // by number
};
extern KingPairs kingPairPawnless;  // 462
extern KingPairs kingPairPawn;      // 1806: pawns leave no symmetry but that of the files

enum SlotType : u8 { plainPawn, movingPawn, knightSlot, bishopSlot, rookSlot, queenSlot, slotTypes };

constexpr u8 noSlot = 255;

// The squares on which a man of the side to move may stand beside the other side's king, numbered from 0: all
// but the king's own and those from which it would check at arm's length. Pawns of the side to move go up;
// a plain pawn gives no check.
extern u8 slot[slotTypes][tbSquares][tbSquares];  // by the king, then the man
extern u8 slotCount[slotTypes][tbSquares];
extern u8 squareOfSlot[slotTypes][tbSquares][tbSquares];  // by the king, then the number

// Ways to choose 0 to 3 of n.
constexpr auto choose = [] {
    std::array<std::array<u32, 4>, tbSquares + 1> ways{};
    for (u32 n = 0; n <= tbSquares; ++n) {
        ways[n][0] = 1;
        for (u32 k = 1; n > 0 && k < 4; ++k) ways[n][k] = ways[n - 1][k - 1] + ways[n - 1][k];
    }
    return ways;
}();

// Fills the tables, which are only read afterwards.
void initIndexTables();

}  // namespace valku
