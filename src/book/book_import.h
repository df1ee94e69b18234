#pragma once

#include <string>

// Builds the book from texts and games, in a dialog with the person at the console. Both work on gamePosition
// and leave it where they end. When the input ends in the middle of a dialog, nothing is imported.

namespace valku {

// False if the text asks for a promotion to what is no piece: the process must end with code 1 then.
bool importTextBook(const std::string& path);

// `beginGames` is called before the games are read. False if they are not.
bool importPgnBook(const std::string& path, void (*beginGames)());

}  // namespace valku
