#pragma once

#include "chess/position.h"

// Generation of pseudo-legal moves for the side to move, on searchPosition unless a position is given. The
// order of the moves in a list is fixed: searches depend on it.

namespace valku {

// Captures of victims worth at least `threshold` (hundredths of a pawn), and promotions to a queen without
// capture. Sets list.mobility to the side's mobility, weighted by squares. Returns the value of the most
// valuable victim that was left out, 0 if none, for delta pruning.
i32 generateCaptures(MoveList& list, i32 threshold);

// Everything that generateCaptures(list, 0) leaves out: non-captures except promotions to a queen, castling
// included. Leaves list.mobility alone.
void generateQuietMoves(MoveList& list);

// All moves. Sets list.mobility to their number.
void generateAllMoves(MoveList& list);
void generateAllMoves(const Position& position, MoveList& list);

// Appends the castling moves of the side to move, in normal chess and Chess960 alike.
void generateCastlings(const Position& position, MoveList& list);

}  // namespace valku
