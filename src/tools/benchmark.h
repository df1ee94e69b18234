#pragma once

#include <string>
#include <string_view>

#include "chess/types.h"

// Measures the search: each position goes through an ordinary thinking cycle of fixed depth. For a person at
// the console; nothing else is done meanwhile.

namespace valku {

// Searches one position `depth` plies deep and tells the speed. Returns its nodes, 0 for a FEN that cannot be
// read; totalNodes is then the sum over all positions so far.
u64 benchPosition(const std::string& fen, i32 depth);

// The built-in positions. `arguments`: a number that is added to every depth.
void benchmark(std::string_view arguments);

// The positions of a file, a line each: the depth, a colon, the FEN. `arguments`: the file's name, a number
// that is added to every depth, and the least nodes for a line in the report beside the file. Ends the
// process, unless it is refused because this is not the console.
void benchFromFile(std::string_view arguments);

}  // namespace valku
