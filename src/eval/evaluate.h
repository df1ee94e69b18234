#pragma once

#include "chess/types.h"

namespace valku {

// White's mobility minus Black's, as the capture generator measures it. Set by the caller of evaluate(), on
// the same thread.
extern i32 mobilityBalance;

// The static evaluation of searchPosition in hundredths of a pawn, from White's view. Writes only the pawn
// hash table. One thread at a time.
i32 evaluate();

}  // namespace valku
