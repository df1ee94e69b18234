#pragma once

#include <string_view>

#include "chess/types.h"

namespace valku {

// Reads a move in standard algebraic notation (Nbxd2+, exd8=N, O-O), as PGN files have it, for gamePosition.
// The result is a legal move, with its castling mark or promotion; without a letter a pawn promotes to a
// queen. If the text is ambiguous, the first piece of its list with a legal move is taken. nullMove if there
// is no such move; *complaint then becomes an error message with line feeds, otherwise null.
//
// Trying a move may change the order of the piece lists, but playing the move leads to the same order as if
// it had not been tried.
Move convertPGNMove2move(std::string_view text, const char** complaint = nullptr);

}  // namespace valku
