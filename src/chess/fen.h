#pragma once

#include <string>
#include <string_view>

#include "chess/position.h"
#include "platform/shared_value.h"

namespace valku {

// How castling is read and written. Written by the thread that reads the commands, read by the others too.
extern SharedFlag chess960;         // Chess960 castling text and rights
extern bool arenaCastlingNotation;  // castling moves are written O-O, and a FEN's castling field is not read
extern bool shredderFen;            // the protocol in use gives Chess960 castling rights as rook files

// The code of a FEN letter, upper case for White; offBoard if it is none.
u8 codeOfLetter(char letter);

// True if the side to move could capture en passant on that square if it had a pawn in place: an empty square
// of the sixth rank, directly behind an enemy pawn.
bool isEnPassantField(const Position& position, int field);

// Sets gamePosition, without a history, from a FEN (Forsyth-Edwards notation). The fields after the side to
// move may be missing. False, with the old position kept, if the text is no position: bad placement, no side
// to move, not exactly one king a side, more men than the lists hold, or the side not to move in check. The
// engine must be idle.
bool readFen(std::string_view text);

// Sets only the men, their counts, the attack counters and the bitboards of `position`, for a fraction of the
// cost: no keys, castling rights or en passant square. False, with the position in an undefined state, for
// every text that readFen refuses. For tools that read millions of positions.
bool readFenMen(std::string_view text, Position& position);

// The FEN of gamePosition, or of another position; the move number counts the moves made since the position
// was set up.
std::string writeFen();
std::string writeFen(const Position& position);

// Exchanges the colors and mirrors the ranks of gamePosition; its history is lost. The engine must be idle.
void mirrorPosition();

extern const char* const startPositionFen;

}  // namespace valku
