#pragma once

#include <string>

namespace valku {

// Reports how deep the engine's games in a PGN file were searched in their first 61 plies, and which moves
// stayed shallow. Throws Fault if the games cannot be read.
void gameStats(const std::string& file);

}  // namespace valku
