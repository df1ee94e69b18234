#pragma once

#include "chess/position.h"
#include "eval/weights.h"

// Where the middlegame ends and the endgame begins.

namespace valku {

constexpr i32 queenShare = 500;

// True if there is more material on the board, in hundredths of a pawn, than `limit` less queenShare for each
// queen.
[[gnu::always_inline]] inline bool isMiddlegame(const Position& position, i32 limit = endgameMaterial) {
    return position.whiteMaterial + position.blackMaterial >
           limit - queenShare * (position.whiteQueenCount + position.blackQueenCount);
}

}  // namespace valku
