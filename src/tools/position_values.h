#pragma once

#include "chess/position.h"

// Values of single positions in hundredths of a pawn, from the side to move's view. Both work on
// searchPosition, so no search may run.

namespace valku {

i32 staticValue(const Position& position);

// The value after quiescence search with an open window.
i32 quiescenceValue(const Position& position);

}  // namespace valku
