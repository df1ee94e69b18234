#pragma once

#include "chess/types.h"

namespace valku {

// White's mobility less Black's, which the capture generator measures. The caller of evaluate() sets it.
extern i32 mobilityBalance;

// The static value of searchPosition in hundredths of a pawn, from White's view. Writes nothing but the pawn
// table. One thread at a time.
i32 evaluate();

}  // namespace valku
