#pragma once

#include "chess/types.h"

namespace valku {

enum class GameEnd { none, fiftyMoves, repetition, insufficientMaterial, whiteMates, blackMates, stalemate };

// Is the game on gamePosition over? With `claim` the draws that have to be claimed are looked at too. Moves
// are tried on the board, which can change the order of its piece lists.
GameEnd findGameEnd(bool claim);

}  // namespace valku
