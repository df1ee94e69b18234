#include "protocol/game_snapshot.h"

#include "chess/position.h"

namespace valku {

GameSnapshot gameSnapshot{};

void snapshotKings() {
    gameSnapshot = {gamePosition.whiteKing, gamePosition.blackKing, gamePosition.sideToMove};
}

}  // namespace valku
