#pragma once

#include <string_view>

// The commands that change or show the game.

namespace valku {

// The state of a new game. The engine must be idle.
void resetGame();

void newGame();
void force();
void undo();
void undoTwice();

// False, with the old position kept, if the text is no position. The engine must be idle.
bool setFen(std::string_view fen);

void mirror();
void showEvaluation();
void analyze();
void exitAnalysis();

// The `go` of every mode.
void goCommand(std::string_view arguments);

}  // namespace valku
