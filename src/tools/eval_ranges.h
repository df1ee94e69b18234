#pragma once

#include <string>

namespace valku {

// Holds the evaluation to a file of expectations. Each is three lines that are not empty: a FEN or "0",
// another, and two numbers, between which the value of the first position less that of the second must lie.
// The breaches go to `file`.out, the greatest first.
void testEvalAgainstFile(const std::string& file);

}  // namespace valku
