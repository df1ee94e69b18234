#pragma once

#include <string_view>

// Single moves of gamePosition into the book and out of it, while no search runs. Throws Fault, with the book
// as it was, if the text is no such move or the move is not in the book.

namespace valku {

// A move and its value letter without a blank between them, such as e2e4a or e7e8Qb.
void receivedAddMove(std::string_view text);

// A move, such as e2e4 or e7e8Q.
void receivedRMMove(std::string_view text);

}  // namespace valku
