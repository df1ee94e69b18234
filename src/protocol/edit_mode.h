#pragma once

#include <string_view>

// Edit mode: lines put men on a board, until a dot makes that board the position. Used by persons, and by
// XBoard interfaces to set up a position.

namespace valku {

// While it is set, every line is a line of edit mode.
extern bool editMode;

// The board to be edited is that of the game; the first men are white. The side that is to move now will be
// so afterwards.
void beginEdit();

// A line of edit mode; without effect, but for the dot that ends it, while the engine thinks. A board that is
// no position is refused with one line, and the game stays as it was.
void editCommand(std::string_view line);

}  // namespace valku
