#pragma once

#include "chess/types.h"

namespace valku {

enum class GameEnd { none, fiftyMoves, repetition, insufficientMaterial, whiteMates, blackMates, stalemate };

// How the game on gamePosition has ended, if it has. With `claim` also by the draws that a player has to
// claim: fifty moves and threefold repetition. Works on a copy, so that a search may run meanwhile.
GameEnd findGameEnd(bool claim);

}  // namespace valku
