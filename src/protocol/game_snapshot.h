#pragma once

#include "chess/types.h"

namespace valku {

// The kings and the side to move of the game as the interface sees it. While a ponder search runs, the board
// already holds the expected reply.
struct GameSnapshot {
    i32 whiteKing;
    i32 blackKing;
    u8 sideToMove;
};

extern GameSnapshot gameSnapshot;

// Takes the snapshot of gamePosition.
void snapshotKings();

}  // namespace valku
