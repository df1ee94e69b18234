#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"

namespace valku {

// The name of a square, such as e4.
std::string squareText(int square);

// The square at the start of a text, such as e4; noSquare if there is none.
int textToSquare(std::string_view text);

// The two squares at the start of a text, such as e2e4. False, with both undefined, if they are not there.
bool textToSquares(std::string_view text, int& from, int& to);

// The code of the piece that a letter N, B, R or Q stands for; 0 for any other character.
u8 promotionPiece(char letter, Color mover);

// Coordinates with an upper-case promotion letter; in Chess960 castling is O-O or O-O-O. For the console and
// for principal variations.
std::string moveToText(Move move);

// A move as UCI writes it: with a lower-case promotion letter; Chess960 castling as king takes rook, or as
// O-O and O-O-O with arenaCastlingNotation. `before` is the record of the position in which the move is
// played.
std::string moveToUciText(Move move, const StateRecord& before);

// The pseudo-legal move with that origin, destination and castling mark; a promotion is to a queen. nullMove
// if there is none.
Move textToMove(int from, int to, u32 castling, const Position& position);

// The legal move from one square to another, tried as a normal move, then as short, then as long castling; a
// promotion is to a queen. nullMove if there is none.
Move findLegalMove(int from, int to, const Position& position);

// The same move with another promotion piece, if the move is a promotion and `piece` a knight, bishop or rook
// of the moving side; otherwise the move as it is.
Move withPromotion(Move move, u8 piece);

// Reads a move of a UCI move list in any of its forms, Chess960 castling included. nullMove if it is not
// legal.
Move uciTextToMove(std::string_view text, const Position& position);

}  // namespace valku
