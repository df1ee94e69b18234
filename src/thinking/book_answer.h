#pragma once

namespace valku {

// Picks a move for gamePosition from the book and plays it as the answer of this search cycle. While the
// engine ponders, the move waits for the end of that. False, and nothing done, if the book has no usable move
// or is not to be asked. Called by the thinking thread.
bool tryBookMove();

}  // namespace valku
