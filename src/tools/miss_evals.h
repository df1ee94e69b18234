#pragma once

#include <string>

namespace valku {

// Finds the positions of the engine's games in a PGN file where its value was too good to be true: far above
// the opponent's, and the game not won. One position a game is shown, with its evaluation, and waits for the
// enter key. True if the engine is to end now: `quit` was the answer. Throws Fault if the file cannot be
// read.
[[nodiscard]] bool checkMissEvals(const std::string& file);

}  // namespace valku
