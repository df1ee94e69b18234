#pragma once

#include <string>

namespace valku {

// How deep the engine's games in a PGN file were searched in their first 60 plies, and which moves stayed
// shallow.
void gameStats(const std::string& file);

}  // namespace valku
