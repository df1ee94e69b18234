#include "chess/game.h"

#include "chess/make_move.h"

namespace valku {

void playGameMove(Move move) {
    droppedGameMoves += trimStateStack(gamePosition);
    makeMove(gamePosition, move);
}

bool takeBackGameMove() {
    if (stackedMoves(gamePosition) == 0) return false;
    unmakeMove(gamePosition);
    return true;
}

}  // namespace valku
