#pragma once

#include <vector>

#include "chess/types.h"
#include "tablebases/board64.h"

// What the squares of the kings decide about an index: the number of their pair after the symmetries of the
// board have been used up, and the squares that are left to the other men.
//
// Symmetric reduction of the king pairs: Thompson, Retrograde Analysis of Certain Endgames, ICCA Journal
// 9(3), 1986. Without pawns the board has eight symmetries, which leave 462 pairs of kings that do not touch;
// with pawns it has two, which leave 1806.

namespace valku {

// Without pawns the king of the side to move is brought to a1, b1, c1, d1, b2, c2, d2, c3, d3 or d4, and if
// it stands on the diagonal the other king to a square not above it.
constexpr bool isFoldedPawnless(u8 own, u8 other) {
    if (file64(own) >= 4 || rank64(own) > file64(own)) return false;
    return file64(own) != rank64(own) || file64(other) >= rank64(other);
}

struct KingSquares {
    u8 own, other;  // `own`: of the side to move
};

constexpr u16 noKingPair = 4000;  // kings on one square or touching, or not folded

struct KingPairs {
    u16 number[tbSquares][tbSquares];  // by own king, then the other
    std::vector<KingSquares> squares;  // by number
};
extern KingPairs kingPairPawnless;
extern KingPairs kingPairPawn;

enum SlotType : u8 { plainPawn, movingPawn, knightSlot, bishopSlot, rookSlot, queenSlot, slotTypes };

constexpr u8 noSlot = 255;

// The squares on which a man of the side to move may stand beside the other king, numbered from 0 in the
// order of the squares. Barred are the king's square and those of a contact check, which no legal position
// has. Pawns of the side to move go up; a plain pawn gives no check.
extern u8 slot[slotTypes][tbSquares][tbSquares];  // by the king, then the man
extern u8 slotCount[slotTypes][tbSquares];
extern u8 squareOfSlot[slotTypes][tbSquares][tbSquares];  // by the king, then the number

// Fills the tables. Before any other use, by one thread; any number of threads may read them afterwards.
void initKingTables();

}  // namespace valku
