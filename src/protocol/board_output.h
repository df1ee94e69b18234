#pragma once

namespace valku {

// Shows gamePosition to a person at a terminal; nothing in the other modes.
void printBoard();

}  // namespace valku
