#pragma once

#include "chess/types.h"
#include "platform/shared_value.h"

namespace valku {

// The kings and the side to move of the game as the interface sees it. While a ponder search runs, the board
// already holds the expected reply. Both threads take it.
struct GameSnapshot {
    SharedNumber whiteKing{noSquare};
    SharedNumber blackKing{noSquare};
    SharedNumber sideToMove{White};
};

extern GameSnapshot gameSnapshot;

// Takes the snapshot of gamePosition.
void snapshotKings();

}  // namespace valku
