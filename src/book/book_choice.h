#pragma once

#include "chess/types.h"

namespace valku {

// The picks are random; each process its own.
void seedBookChoice(u64 seed);

// Picks a move for gamePosition by the weights of the values and plays it as the answer of this search cycle.
// While the engine ponders, the move waits for the end of that. False, and nothing done, if the book has no
// usable move. Called by the thinking thread.
bool tryBookMove();

}  // namespace valku
