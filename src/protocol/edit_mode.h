#pragma once

#include <string_view>

// Edit mode: each line puts a man on a board, until a dot makes that board the position. For persons and for
// XBoard interfaces. On the thread that reads the commands.

namespace valku {

// While it is set, every line is a line of edit mode.
inline bool editMode = false;

// Starts with the board of the game and with white men. The side to move stays the same.
void beginEdit();

// A line of edit mode; without effect, but for the dot that ends it, while the engine thinks. A board that is
// no position is refused with one line, and the game stays as it was.
void editCommand(std::string_view line);

}  // namespace valku
