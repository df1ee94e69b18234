#pragma once

#include <string>

namespace valku {

// Collects quiet positions from the games of a PGN file, a few of each, into testPosEval.txt: sorted FENs,
// one a line.
void generateTestposEval(const std::string& file);

}  // namespace valku
