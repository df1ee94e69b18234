#pragma once

#include <functional>
#include <map>
#include <memory>

#include "tablemaker/ending.h"

// Retrograde analysis: Thompson, Retrograde Analysis of Certain Endgames, ICCA Journal 9(3), 1986;
// https://www.chessprogramming.org/Retrograde_Analysis.

namespace valku {

// Endings by class number.
using SolvedEndings = std::map<int, std::unique_ptr<Ending>>;

// The classes that captures and promotions lead to, each once.
std::vector<int> classesAfter(int tbClass);

// Finds the distance to mate of every position of the ending for both sides to move, working backwards from
// the mates and from the captures and promotions that lead to `solved` endings, which hold all of
// classesAfter. `report` is called on this thread, now and then, with the part that is done, 0 to 1. Throws a
// Fault if a mate is too far away for a table's bytes.
//
// States are those of positions in which no pawn may be captured en passant, but the value of a double step
// takes such a reply into account.
void solveEnding(Ending& ending, const SolvedEndings& solved, int threads,
                 const std::function<void(double)>& report);

}  // namespace valku
