#pragma once

#include <string_view>

namespace valku {

// Lets another UCI engine give values to the positions of a file. `arguments`: the engine's program, the file
// with a FEN a line, the depth in plies, the file for the values, and optionally the seconds that the engine
// may be silent while an answer is due (default 60). Writes each position and, on the line after it, its
// value in hundredths of a pawn from White's view: a learn file. A position without a value is left out.
// Throws Fault if it cannot begin; a failure of the engine is reported. Called by the thread that reads the
// commands; returns when the engine has ended or the command has been stopped.
void callEngine(std::string_view arguments);

}  // namespace valku
