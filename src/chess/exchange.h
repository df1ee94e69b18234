#pragma once

#include "chess/types.h"

// Static exchange evaluation (https://www.chessprogramming.org/Static_Exchange_Evaluation): the captures on
// the destination square of a move, cheapest attacker first. On searchPosition, which is left exactly as it
// was; hundredths of a pawn, from the view of the side to move.

namespace valku {

// The material outcome if both sides may stop whenever that is better. X-ray attackers behind the moving man
// count; those behind later capturers do not.
i32 staticExchange(Move move);

// Tests whether staticExchange(move) reaches `threshold`, which is cheaper than the exact value: the result
// is at least `threshold` exactly then. A result below `threshold` is an estimate of the outcome.
i32 exchangeBound(Move move, i32 threshold);

}  // namespace valku
