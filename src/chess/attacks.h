#pragma once

#include "chess/position.h"

// What can be asked of a position without making a move. Without a Position argument searchPosition is meant.

namespace valku {

bool isAttackedByWhite(int square);
bool isAttackedByBlack(int square);
bool isAttackedByWhite(const Position& position, int square);
bool isAttackedByBlack(const Position& position, int square);

// Is the king of the side to move attacked?
bool inCheck();
bool inCheck(const Position& position);

// After a move: does the king of the side that made it stand attacked?
bool leftKingInCheck();
bool leftKingInCheck(const Position& position);

// May this word be played by the side to move? Pins and checks are not looked at; castling words and the null
// move are refused.
bool isPseudoLegal(Move move);
bool isPseudoLegal(const Position& position, Move move);

// Asked before the move is made. Promotions are judged by the pawn; a king gives no direct check; discoveries
// through an en passant victim are not seen.
bool givesDirectCheck(Move move);
bool givesDiscoveredCheck(Move move);

// Has the current position occurred before within its fifty-move count? One earlier occurrence is enough.
bool isRepetition();

// Is a pseudo-legal move legal? Tried on a copy, so that the order of the piece lists stays.
bool isLegal(const Position& position, Move move);

// Moves of the list that do not leave the mover's king attacked. Each is made and unmade on the position,
// which can change the order of its piece lists.
i32 countLegalMoves(Position& position, const MoveList& list);

}  // namespace valku
