#pragma once

#include "chess/types.h"

// Exchange sequences on the destination of a move, on searchPosition, which is left exactly as it was.

namespace valku {

// The material outcome for the side to move, both sides capturing cheapest man first and free to stop. Men
// behind the first mover are seen through it; batteries behind later capturers are not.
i32 staticExchange(Move move);

// The cheaper question whether staticExchange(move) reaches `threshold`: the result is at least `threshold`
// exactly then. A result below it estimates the gain.
i32 exchangeBound(Move move, i32 threshold);

}  // namespace valku
