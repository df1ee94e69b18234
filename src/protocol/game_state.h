#pragma once

#include "thinking/search_request.h"

// What the front-ends know of the game beside the board. Read and written by the thread that reads the
// commands.

namespace valku {

enum EngineSide : int { engineWhite = 0, engineBlack = 1, engineNone = 2 };

// The side that the engine plays.
inline int engineSide = engineBlack;

// What the next search is asked for, as the commands so far have it.
inline SearchRequest nextSearch;

// Starts a search of gamePosition. The engine must be idle.
void startSearch(bool asPonderSearch = false);

// nextSearch has been changed: also for what the engine begins by itself.
void limitsChanged();

// The engine plays the side that is to move.
void takeSideToMove();

}  // namespace valku
