#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"

namespace valku {

// Such as e4.
std::string squareText(int square);

// The mover's piece that a letter of N, B, R and Q names; 0 for any other character.
u8 promotionPiece(char letter, Color mover);

// Coordinates with an upper-case promotion letter; in Chess960 castling is O-O or O-O-O. The text of the
// console and of main lines.
std::string moveToText(Move move);

// What UCI wants of a move: lower-case promotion letter; Chess960 castling as king takes rook, or as O-O and
// O-O-O with the arena notation. `before` is the record of the position in which the move is played.
std::string moveToUciText(Move move, const StateRecord& before);

// The first generated move with that origin, destination and castling mark, a queen being the promotion of a
// pawn that reaches the last rank. 0 if there is none. Legality is not tested.
Move textToMove(int from, int to, u32 castling, const Position& position);

// The legal move from one square to another, tried as a plain move, then as short, then as long castling; of
// promotions the queen's. 0 if there is none.
Move findLegalMove(int from, int to, const Position& position);

// The same move with another piece, if it is a promotion and the piece one of the mover's to promote to;
// otherwise the move as it is.
Move withPromotion(Move move, u8 piece);

// Reads a move of a UCI move list in any of its forms, Chess960 castling included. 0 if it is not a legal
// move.
Move uciTextToMove(std::string_view text, const Position& position);

}  // namespace valku
