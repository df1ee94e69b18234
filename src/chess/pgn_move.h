#pragma once

#include <string_view>

#include "chess/types.h"

namespace valku {

// Reads a move in the notation of game files (Nbxd2+, exd8=N, O-O) for gamePosition. The result is a legal
// move, with its castling mark or promotion; without a letter a pawn promotes to a queen. Of several men that
// the text fits, the first of its list whose move is legal is meant. 0 if there is none; *complaint then
// becomes the line to be told, with its line feeds, and otherwise null.
//
// The position stays as it is but for the order of piece lists, which trying a move may change; playing the
// move leads to the same order as if it had not been tried.
Move convertPGNMove2move(std::string_view text, const char** complaint = nullptr);

}  // namespace valku
