#pragma once

#include "chess/types.h"

// The values of the men, in hundredths of a pawn. They are settings; the chess core reads them for material
// sums and exchanges, the evaluation for everything else.

namespace valku {

extern i32 pawnValue;
extern i32 knightValue;
extern i32 bishopValue;
extern i32 rookValue;
extern i32 queenValue;

// The same by piece code, for both colours; 0 for the kings, the empty code and everything else.
extern i32 pieceValueByCode[256];

// Brings pieceValueByCode in line with the five values. Only between searches.
void updatePieceValues();

}  // namespace valku
