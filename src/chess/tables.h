#pragma once

#include "chess/types.h"

// Tables of the chess core. They are computed once, before the second thread starts, and only read
// afterwards.

namespace valku {

extern u64 squareMask[128];   // the bit of a square: rank * 8 + file
extern u64 squareClear[128];  // its complement

// Attack masks of an empty board.
extern u64 knightAttacks[128];
extern u64 bishopRays[128];
extern u64 rookRays[128];

// Zobrist keys (A. L. Zobrist, A New Hashing Method with Application for Game Playing, 1970): the key of a
// position is the XOR of the keys of its parts. The seed of the generator is fixed, so that all processes of
// a search have the same keys. The side to move flips bit 0 of both halves.
extern u32 pieceKeyLow[256][128];   // by piece code and square
extern u32 pieceKeyHigh[256][128];  // by piece code and square
extern u32 epKey[128];              // by en passant square; entry noEpField for none
extern u64 whitePawnKey[128];       // the pawn keys make up StateRecord::pawnHash
extern u64 blackPawnKey[128];

// A table indexed by the difference of two squares of the board, -119 to 119.
struct DifferenceTable {
    i32 cells[239];

    i32& operator[](int difference) { return cells[difference + 119]; }
    i32 operator[](int difference) const { return cells[difference + 119]; }
};

// By `to - from`: the step that leads from `from` to `to` if they share a rank, file or diagonal, otherwise
// 0.
extern DifferenceTable directionTable;

// Fills everything above, and pieceValueByCode. The keys are the first numbers of nextRandom().
void initChessTables();

}  // namespace valku
