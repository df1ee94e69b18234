#pragma once

#include "chess/position.h"

// One iteration over the root moves.

namespace valku {

// Copies gamePosition to rootPosition, generates its moves into rootMoves and forgets what an earlier search
// knew of its own.
void prepareRootSearch();

// The board on which the root moves are made and taken back. gamePosition itself stands still during a
// search, so that the thread that reads commands can look at it.
extern Position rootPosition;

extern MoveList rootMoves;  // scores[i]: the last open-window value of move i, -mateScore for an illegal one

// Nodes spent on a root move in open-window searches of this search cycle.
u64 rootNodesOf(Move move);

// Half-width of the current window, in hundredths of a pawn; each iteration has one of its own. Written by
// the thinking thread. (The setting of that name serves no iteration.)
inline i32 aspirationWindow = 25;

// The best move at the end of an iteration steers the order of the next ones.
void rememberBestMove(i32 depth, Move move);

// An iteration of `depth` plies. Returns the final alpha, or stopValue after a stop; the best line is
// reported on the way. A fail high widens beta by aspirationWindow, then by twice and four times as much.
i32 alphaBetaRoot(i32 alpha, i32 beta, i32 depth);

}  // namespace valku
