#pragma once

#include "chess/position.h"

namespace valku {

// Plays a legal move on gamePosition. Games may be of any length: when the stack gets short of room for a
// search, its oldest records go.
void playGameMove(Move move);

// Takes the last move back; false if there is none on the stack.
bool takeBackGameMove();

}  // namespace valku
