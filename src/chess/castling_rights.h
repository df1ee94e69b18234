#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"

// Castling rights of a position that is being set up, in normal chess and in Chess960 (Fischer random chess).
// All functions work on the current record of a position whose men are placed; a right is granted only for a
// rook on its king's home rank.

namespace valku {

// The castling field of a FEN: K, Q, k and q for the rooks in the corners, with a king on e1 or e8.
void readNormalCastlings(Position& position, std::string_view field);

// The castling field of a Shredder-FEN: the files of the rooks as letters. K, Q, k and q are understood too,
// for the outermost rooks, as in X-FEN (https://www.chessprogramming.org/Forsyth-Edwards_Notation).
void readShredderCastlings(Position& position, std::string_view field);

// Every right that the placement allows: in Chess960 for the nearest rook on each side of a king on its home
// rank, otherwise for the rooks in the corners with a king on e1 or e8.
void deriveCastlings(Position& position, bool isChess960);

// True if each right of the current record belongs to a rook on its king's home rank, on the right side of
// it.
bool areCastlingsSound(const Position& position);

// The castling field of a FEN: rook files in Chess960, otherwise K, Q, k and q; - without any right.
std::string castlingField(const Position& position, bool isChess960);

}  // namespace valku
