#pragma once

#include <string_view>

namespace valku {

// Lets another UCI engine give values to the positions of a file. `arguments`: the engine's program, the file
// with a FEN a line, the depth in plies, the file for the values, and, if need be, the seconds that the
// engine may be silent while an answer is due. Writes each position and behind it, on a line of its own, its
// value in hundredths of a pawn from White's view. A position without a value is left out. Called by the
// thread that reads the commands; returns when the engine is gone.
void callEngine(std::string_view arguments);

}  // namespace valku
