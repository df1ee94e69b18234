#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"

// Who may still castle with which rook, as a set-up position gives it. The rights go into the current
// record of a position whose men stand; one is granted only for a rook on the king's own home rank.

namespace valku {

// The castling field of an ordinary FEN: K, Q, k and q, for the rooks in the corners beside a king on e1 or
// e8.
void readNormalCastlings(Position& position, std::string_view field);

// Rook files as letters; the four usual letters stand for the outermost rooks.
void readShredderCastlings(Position& position, std::string_view field);

// Every right that the men allow: in Chess960 the nearest rook on each side of a king on its home rank,
// otherwise the rooks in the corners beside a king on e1 or e8.
void deriveCastlings(Position& position, bool isChess960);

// Do the men bear out the rights of the current record: each a rook of the king's own home rank, on its side?
bool areCastlingsSound(const Position& position);

// The castling field of a FEN: rook files in Chess960, else the four usual letters.
std::string castlingField(const Position& position, bool isChess960);

}  // namespace valku
