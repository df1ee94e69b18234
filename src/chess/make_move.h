#pragma once

#include "chess/position.h"

// Making and unmaking moves. Nothing is tested here: a move must be at least pseudo-legal, and the caller
// tests afterwards whether the mover's king stands attacked. After make and unmake the order of piece lists
// may differ.

namespace valku {

// On searchPosition.
void makeMove(Move move);
void unmakeMove();
void makeNullMove();
void unmakeNullMove();

// The same on any position.
void makeMove(Position& position, Move move);
void unmakeMove(Position& position);

}  // namespace valku
