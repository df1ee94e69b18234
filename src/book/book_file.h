#pragma once

#include <string>

// The book on disk. No header; for each bucket that is not empty, in rising order, its number (2 bytes,
// little-endian) and its positions: the second half of the key (4 bytes), the moves (4 bytes each) and a mark
// that tells what follows. A move begins with a square, which is below every mark.

namespace valku {

// Adds the file named by bookFile to the book in memory. A damaged file is told and what could be read is
// kept. Only the process that is asked for moves needs a book. False if there is no such file, which is told.
bool loadBook();

// A failure leaves the old file whole.
void saveBook(const std::string& path);

}  // namespace valku
