#pragma once

#include <string_view>

namespace valku {

// Turns a learn file (pairs of lines: a FEN, its value in hundredths of a pawn from White's view) into two
// matrices for fitting weights outside the program: <matrix file>.mg for the middle game, <matrix file>.eg
// for the ending. `arguments`: the names of the learn file and of the matrix file.
//
// Called on the thread that reads the commands; ends a running search without output. The game stays as it
// is. A matrix that stood there is replaced only when the new ones are complete.
void learnFileToMatrix(std::string_view arguments);

}  // namespace valku
