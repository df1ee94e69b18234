#pragma once

#include <functional>
#include <map>
#include <memory>

#include "tablemaker/ending.h"

namespace valku {

// Endings by class number.
using SolvedEndings = std::map<int, std::unique_ptr<Ending>>;

// The classes that captures and promotions lead to, each once.
std::vector<int> classesAfter(int tbClass);

// Finds the state of every position of the ending for both sides to move, by working backwards from the mates
// and from the captures and promotions that lead to `solved` endings, which hold all of classesAfter.
// `report` is called now and then with the part that is done, 0 to 1. False if a mate lies too far away for a
// table's bytes.
//
// States are those of positions in which no pawn may be captured en passant. What such a capture does to the
// worth of a double step is taken into account.
bool solveEnding(Ending& ending, const SolvedEndings& solved, int threads,
                 const std::function<void(double)>& report);

}  // namespace valku
