#pragma once

#include "chess/position.h"

// Pseudo-legal moves of the side to move. The order of the moves in a list is fixed: searches depend on it.

namespace valku {

// Captures of victims worth at least `threshold`, and queen promotions by pushing. Sets list.mobility to the
// side's square-weighted mobility. Returns the highest victim value that was left out, 0 if none.
i32 generateCaptures(MoveList& list, i32 threshold);

// Everything that generateCaptures(list, 0) leaves out: non-captures without queening pushes, castling
// included. Leaves list.mobility alone.
void generateQuietMoves(MoveList& list);

// All moves; list.mobility becomes the count.
void generateAllMoves(MoveList& list);
void generateAllMoves(const Position& position, MoveList& list);

// Appends the castling moves of the side to move, in normal chess and Chess960 alike.
void generateCastlings(const Position& position, MoveList& list);

}  // namespace valku
