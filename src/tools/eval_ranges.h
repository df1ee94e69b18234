#pragma once

#include <string>

namespace valku {

// Checks the evaluation against a file of expectations. Each is three lines that are not empty: a FEN or "0",
// another, and two numbers, the least and the most of the value of the first position less that of the second
// (quiescence values from the side to move's view, in hundredths of a pawn; "0" stands for 0). The breaches
// go to `file`.out, the greatest first. Throws Fault if a file cannot be read or written.
void testEvalAgainstFile(const std::string& file);

}  // namespace valku
