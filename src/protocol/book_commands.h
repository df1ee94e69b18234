#pragma once

#include <string_view>

// The commands around the opening book, for a person at the console. They work in the idle state and are
// passed over while the engine thinks, but for importPgn, which ends the search first.

namespace valku {

void importText(std::string_view path);

// Nothing stands for a missing file name.
void importPgn(std::string_view path);

void writeBook(std::string_view path);
void showBook();
void addMoveToBook(std::string_view text);
void removeMoveFromBook(std::string_view text);

}  // namespace valku
