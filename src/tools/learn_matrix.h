#pragma once

#include <string_view>

namespace valku {

// Turns a learn file (pairs of lines: a FEN, its value in hundredths of a pawn from White's view) into the
// two design matrices of a linear least squares fit of evaluation weights, which share/tuning/fit.py does:
// <matrix file>.mg for the middlegame, <matrix file>.eg for the endgame. `arguments`: the names of the learn
// file and of the matrix file.
//
// Called by the thread that reads the commands; ends a running search without output. The game stays as it
// is. Throws Fault if anything fails; matrices of that name are replaced only when the new ones are complete.
void learnFileToMatrix(std::string_view arguments);

}  // namespace valku
