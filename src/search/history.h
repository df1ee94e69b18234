#pragma once

#include "chess/types.h"

// The history heuristic (J. Schaeffer, "The History Heuristic", ICCA Journal 6/3, 1983), with six tables
// chosen by the distance from a node's static evaluation to beta and chained: a move that succeeds where that
// is hard is rewarded in the tables of all easier margins too, and one that fails where it is easy is
// penalized in those of all harder ones. Values are never aged. The searching thread writes them, and
// clearHistory().

namespace valku {

struct HistoryTable {
    i32 values[256][128];     // by the code of the moved piece and the destination
    i32 penalty;              // what a failed move loses
    HistoryTable* chainUp;    // the next table that a reward spreads to
    HistoryTable* chainDown;  // the next table that a penalty spreads to
};

inline HistoryTable historyTables[6];

// Sets penalties and chains. Once, before the first search.
void linkHistoryTables();

// Clears all values. Only while no search runs.
void clearHistory();

// `margin` is beta less the static evaluation.
HistoryTable& historyTableFor(i32 margin);

// A quiet move that reached beta or raised alpha at `depth` quarter plies. Never lowers a value.
inline void rewardHistory(HistoryTable& table, u8 piece, int to, i32 depth) {
    const i32 reward = depth * depth;
    for (HistoryTable* chained = &table; chained; chained = chained->chainUp) {
        i32& value = chained->values[piece][to];
        if (value < reward) value = reward;
    }
}

// A move that failed, captures included. Nothing bounds the values: they may wrap around.
inline void penalizeHistory(HistoryTable& table, u8 piece, int to) {
    for (HistoryTable* chained = &table; chained; chained = chained->chainDown) {
        i32& value = chained->values[piece][to];
        value = static_cast<i32>(static_cast<u32>(value) - static_cast<u32>(chained->penalty));
    }
}

}  // namespace valku
