#pragma once

#include <array>

#include "chess/types.h"

// From a position to the number of its entry in the table, and back. Squares here are 0 to 63: rank * 8 +
// file.
//
// A plan is what a class's name and the side to move say about the numbering, worked out once. Running one
// allocates and parses nothing. After initIndexPlans everything here may be called from several threads.

namespace valku {

// The men of one side: three places each for pawns, knights, bishops, rooks and queens, then the king. The
// men of a type stand in any order; unused places hold 0.
using TbMen = std::array<u8, 16>;
constexpr int tbPlacesOfType = 3;
constexpr int tbKingPlace = 15;

constexpr u64 noIndex = ~u64{0};

// Builds the tables and the plans of all classes once; further calls do nothing.
void initIndexPlans();

// The entry of a position of the class with `side` to move (0 = first-named). `inverted` tells that the pawns
// of the first-named side go down the board. The men are those of the class, on different squares. noIndex if
// the kings touch, the side to move gives check at arm's length, or a pawn stands on the first or last rank.
//
// A position without pawns and its mirror images have the same number, unless both kings stand on a long
// diagonal: then a mirroring along it leads to another one, and both are in use.
u64 tableIndex(int tbClass, int side, const TbMen& first, const TbMen& second, bool inverted);

// The reverse, with the pawns of the first-named side going up. False for a number that no placement with all
// men on different squares has, among them those of the en passant tail. Men of a type come in rising order
// of their numbers.
bool squaresOfIndex(int tbClass, int side, u64 index, TbMen& first, TbMen& second);

// Numbers below indexRange stand for positions without a right to capture en passant. Behind them, in classes
// with pawns on both sides, lies a tail for the others, which nothing here reads; indexLimit is its end. The
// last numbers of the tail are of no use to any legal position: they begin at usedTailEnd. Without a tail all
// three are the same.
u64 indexRange(int tbClass, int side);
u64 usedTailEnd(int tbClass, int side);
u64 indexLimit(int tbClass, int side);

}  // namespace valku
