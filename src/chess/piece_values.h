#pragma once

#include "chess/types.h"

// The values of the men, in hundredths of a pawn. They are settings, written by the thread that reads the
// commands while no search runs. The chess core uses them for material sums and exchanges.

namespace valku {

extern i32 pawnValue;
extern i32 knightValue;
extern i32 bishopValue;
extern i32 rookValue;
extern i32 queenValue;

// The same by piece code, for both colors; 0 for kings, the empty code and everything else.
extern i32 pieceValueByCode[256];

// Sets pieceValueByCode from the five values. Only between searches; see updateDerivedMaterial().
void updatePieceValues();

}  // namespace valku
