#pragma once

#include <istream>
#include <map>

#include "book/opening_book.h"

// Books as text. A line is a branch: a move number, followed by a "-" if Black is to move, tells the point in
// the branch before it from which it goes on; then come moves such as E2E4 or E7E8/Q, each with a value or
// none, and ";" at the end. Moves that are not legal are skipped.

namespace valku {

// From a value in the text to the value in the book, '0' to leave those moves out. Moves with "-" for a value
// stand under '-', moves without one under noTextValue.
using TextBookValues = std::map<char, char>;
constexpr char noTextValue = ' ';

// Plays the branches on gamePosition, which must be the initial one, and adds their moves to the book. Throws
// Fault at a promotion to what is no piece; the moves before it are in the book then.
void readTextBook(std::istream& text, const TextBookValues& values, Overwrite overwrite);

}  // namespace valku
