#pragma once

#include "chess/types.h"

// Tables of the chess core that are computed once, before the first thread starts, and only read afterwards.

namespace valku {

extern u64 squareMask[128];   // the bit of a square: rank * 8 + file
extern u64 squareClear[128];  // its complement

// Attack masks of an empty board.
extern u64 knightAttacks[128];
extern u64 bishopRays[128];
extern u64 rookRays[128];

// Random keys. The generator's seed is fixed, so every process has the same keys.
extern u32 pieceKeyLow[256][128];   // by piece code and square
extern u32 pieceKeyHigh[256][128];  // by piece code and square
extern u32 epKey[128];              // entry 123 stands for no en passant square
extern u64 whitePawnKey[128];
extern u64 blackPawnKey[128];

// A table indexed by the difference of two squares of the board, -119 to 119.
struct DifferenceTable {
    i32 cells[239];

    i32& operator[](int difference) { return cells[difference + 119]; }
    i32 operator[](int difference) const { return cells[difference + 119]; }
};

// By `to - from`: the step that leads from `from` to `to` if they share a rank, file or diagonal, else 0.
extern DifferenceTable directionTable;

// Fills everything above, and pieceValueByCode. Draws the first values of the random stream.
void initChessTables();

}  // namespace valku
