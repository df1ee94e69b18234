#pragma once

#include "chess/position.h"

namespace valku {

// Plays a legal move on gamePosition. Games may be of any length: see trimStateStack().
void playGameMove(Move move);

// Takes the last move back. False if the stack holds none.
bool takeBackGameMove();

// Keeps the game for the length of a scope in which gamePosition is used for something else, and puts it back
// at the end. For the thread that reads the commands, while no search runs.
class KeptGame {
  public:
    KeptGame() : position_(gamePosition), droppedMoves_(droppedGameMoves) {}
    ~KeptGame() {
        gamePosition = position_;
        droppedGameMoves = droppedMoves_;
    }
    KeptGame(const KeptGame&) = delete;
    KeptGame& operator=(const KeptGame&) = delete;

  private:
    const Position position_;
    const int droppedMoves_;
};

}  // namespace valku
