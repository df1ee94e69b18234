#pragma once

#include <string>

// The book on disk. No header; for each bucket that is not empty, in rising order, its number (2 bytes,
// little-endian) and its positions: the second half of the key (4 bytes), the moves (4 bytes each) and a mark
// that tells what follows. A move begins with a square, which is below every mark.

namespace valku {

// The path of the book that is loaded. A setting, written at start-up.
inline std::string bookFile = "<empty>";

// Adds the file named by bookFile to the book in memory; false if there is no such file. If it is damaged,
// that is reported, and what could be read is kept.
bool loadBook();

// Writes the book in memory to a file. Throws Fault if it cannot; an old file is as it was then.
void saveBook(const std::string& path);

}  // namespace valku
