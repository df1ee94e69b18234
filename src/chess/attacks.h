#pragma once

#include "chess/position.h"

// Questions about a position that are answered without making a move. Functions without a Position argument
// are about searchPosition.

namespace valku {

bool isAttackedByWhite(const Position& position, int square);
bool isAttackedByBlack(const Position& position, int square);

// True if the king of the side to move is attacked.
bool inCheck();
bool inCheck(const Position& position);

// After a move: true if the king of the side that made it is attacked, so that the move was not legal.
bool leftKingInCheck();
bool leftKingInCheck(const Position& position);

// True if the side to move can play this move, disregarding pins and checks; for moves from the hash table or
// from other sources that may not fit the position. False for castling and the null move.
bool isPseudoLegal(Move move);
bool isPseudoLegal(const Position& position, Move move);

// To be asked before the move is made. A promotion counts as a move of the pawn; a king gives no direct
// check; checks discovered by the removal of an en passant victim are not seen.
bool givesDirectCheck(Move move);
bool givesDiscoveredCheck(Move move);

// True if the position has occurred before since the last capture or pawn move; once is enough.
bool isRepetition();

// True if a pseudo-legal move is legal. It is tried on a copy: the order of the piece lists stays.
bool isLegal(const Position& position, Move move);

// The number of legal moves in a list of pseudo-legal ones. Each is made and unmade on the position, which
// can change the order of its piece lists.
i32 countLegalMoves(Position& position, const MoveList& list);

}  // namespace valku
