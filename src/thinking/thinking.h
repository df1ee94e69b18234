#pragma once

#include "thinking/search_request.h"

// The thinking thread: one search cycle, and the wait-think cycle around it.

namespace valku {

// Waits for requests and serves them, for the life of the process. If the engine keeps the game, it ponders
// after its own move unless easyMode is set.
[[noreturn]] void runThinkingCycle();

// One search cycle on gamePosition, from the book to the move made and announced. `depthLimit` in plies;
// `scheduledSeconds` is the time to spend, or unlimitedSeconds.
void think(i32 depthLimit, double scheduledSeconds, const SearchRequest& request = {});

// Above 0: the depth in plies of every search. A setting.
inline i32 quickPlay = 0;

}  // namespace valku
