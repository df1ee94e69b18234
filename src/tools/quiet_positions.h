#pragma once

#include <string>

namespace valku {

// Collects quiet positions (those where quiescence search changes nothing in the static value) from the games
// of a PGN file, a few of each, into testPosEval.txt: sorted FENs, one a line. Throws Fault if the games
// cannot be read.
void generateTestposEval(const std::string& file);

}  // namespace valku
