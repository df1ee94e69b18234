#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"
#include "platform/shared_value.h"

namespace valku {

// How castling is read and written; set by the protocols.
extern SharedFlag chess960;         // Chess960 castling text and rights
extern bool arenaCastlingNotation;  // castling moves are written O-O, and a FEN's castling field is not read
extern bool shredderFen;            // the protocol in use gives Chess960 castling rights as rook files

// The man that a letter of a FEN stands for, upper case for White; offBoard if none.
u8 codeOfLetter(char letter);

// Could the side to move capture en passant there, had it a pawn in place: an empty field right behind an
// enemy pawn?
bool isEnPassantField(const Position& position, int field);

// Sets gamePosition. The fields after the side to move may be missing. False, with the old position kept, if
// the text is no position: bad placement, no side to move, not exactly one king a side, more men than the
// lists hold, or the side not to move in check.
bool readFen(std::string_view text);

// Puts the men, their counts and the attack filters of a FEN into `position`, at a fraction of the cost: no
// keys, no castling rights, no en passant field, no former position to come back to. False, with the position
// spoilt, for every text that readFen refuses. For tools that go through millions of positions.
bool readFenMen(std::string_view text, Position& position);

// The FEN of gamePosition; the move number counts the moves made since the position was set up.
std::string writeFen();
std::string writeFen(const Position& position);

// gamePosition with colours and ranks exchanged.
void mirrorPosition();

extern const char* const startPositionFen;

}  // namespace valku
