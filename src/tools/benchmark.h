#pragma once

#include <string_view>

// Measures the search: each position goes through an ordinary thinking cycle of fixed depth. Called by the
// thread that reads the commands, which waits for the end. Throws Fault unless this is the console.

namespace valku {

// The built-in positions. `arguments`: a number that is added to every depth.
void benchmark(std::string_view arguments);

// The positions of a file, a line each: the depth, a colon, the FEN. `arguments`: the file's name, a number
// that is added to every depth, and the least nodes for a line in the report beside the file. True if the
// engine is to end now, with code 0: always, also after a failure, but not if the process ends already.
[[nodiscard]] bool benchFromFile(std::string_view arguments);

}  // namespace valku
