#include "protocol/game_snapshot.h"

#include "chess/position.h"

namespace valku {

GameSnapshot gameSnapshot;

void snapshotKings() {
    gameSnapshot.whiteKing = gamePosition.whiteKing;
    gameSnapshot.blackKing = gamePosition.blackKing;
    gameSnapshot.sideToMove = gamePosition.sideToMove;
}

}  // namespace valku
