#pragma once

#include <string>

// Builds the book from texts and games, in a dialog with the person at the console. Both work on gamePosition
// and leave it where they end. When the input ends in the middle of a dialog, nothing is imported.

namespace valku {

// Adds the moves of a text book (see text_book.h). What keeps it from beginning is reported. Throws Fault
// if the text asks for a promotion to what is no piece: the process must end with code 1 then.
void importTextBook(const std::string& path);

// Adds the moves of a file's games. `beginGames` is called before the games are read. Throws Fault if they
// are not.
void importPgnBook(const std::string& path, void (*beginGames)());

}  // namespace valku
