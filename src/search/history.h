#pragma once

#include "chess/types.h"

// What the moves have been worth: six tables, chosen by how far a node's static evaluation lies from beta. A
// move that succeeds where that is hard is good news for every easier margin, and one that fails where it is
// easy is bad news for every harder one: rewards and penalties run along the chain. Values are never aged;
// they live until clearHistory().

namespace valku {

struct HistoryTable {
    i32 values[256][128];     // by the code of the moved man and the destination
    i32 penalty;              // what a failed move loses
    HistoryTable* chainUp;    // the next table that a reward spreads to
    HistoryTable* chainDown;  // the next table that a penalty spreads to
};

extern HistoryTable historyTables[6];

// Sets penalties and chains; once, before the first search.
void linkHistoryTables();
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

// A move that failed, captures included. The values may wrap around; nothing bounds them.
inline void penaliseHistory(HistoryTable& table, u8 piece, int to) {
    for (HistoryTable* chained = &table; chained; chained = chained->chainDown) {
        i32& value = chained->values[piece][to];
        value = static_cast<i32>(static_cast<u32>(value) - static_cast<u32>(chained->penalty));
    }
}

}  // namespace valku
