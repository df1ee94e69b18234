#pragma once

#include <string_view>

namespace valku {

// Does a line hold a move in coordinates, or a castling word?
bool isMoveText(std::string_view line);

// A move of the opponent, from an XBoard interface or a person. A text that is no legal move has no effect.
// With `ponderFlag` the move is only expected, and the engine ponders on it.
void receiveMove(std::string_view text, bool ponderFlag);

}  // namespace valku
