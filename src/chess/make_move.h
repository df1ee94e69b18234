#pragma once

#include "chess/position.h"

// Making and unmaking moves, with incremental update of keys, lists, counters and bitboards. Nothing is
// tested: a move must be pseudo-legal, and the caller tests afterwards with leftKingInCheck() whether it was
// legal. After making and unmaking a move the order of the piece lists may differ. After a promotion or
// castling the key differs from the one that computeDerived() gives.

namespace valku {

// On searchPosition. unmakeMove() takes back the last move, which must not have been a null move, and
// unmakeNullMove() a null move.
void makeMove(Move move);
void unmakeMove();
void makeNullMove();
void unmakeNullMove();

// The same on any position.
void makeMove(Position& position, Move move);
void unmakeMove(Position& position);

}  // namespace valku
