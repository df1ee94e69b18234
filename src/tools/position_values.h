#pragma once

#include "chess/position.h"

// Values of single positions, outside any search. The engine must be idle. Both work on searchPosition and
// are from the side to move's view, in hundredths of a pawn.

namespace valku {

i32 staticValue(const Position& position);

// The static value once the captures are over.
i32 quiescenceValue(const Position& position);

}  // namespace valku
