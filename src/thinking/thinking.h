#pragma once

#include "search/search_types.h"

// The thinking thread: one search cycle, and the wait-think cycle around it.

namespace valku {

// Waits for requests and thinks, for the life of the process. In XBoard and console mode it goes on to ponder
// by itself unless told not to.
[[noreturn]] void runThinkingCycle();

// One search cycle on gamePosition, from the book to the move made and announced. `depthLimit` in plies;
// `scheduledSeconds` is the time to spend, or unlimitedSeconds.
void think(i32 depthLimit, double scheduledSeconds);

// Among the main lines of the last search's finished iterations the newest one that begins with this move and
// has a reply; null if there is none.
const Line* findFinishedLine(Move firstMove);

}  // namespace valku
