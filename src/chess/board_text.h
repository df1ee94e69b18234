#pragma once

#include <string>

#include "chess/position.h"

namespace valku {

// The board for a terminal: ranks from 8 to 1, the side to move, and the two halves of the key. Ends with a
// line feed.
std::string boardText(const Position& position);

}  // namespace valku
