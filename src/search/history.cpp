#include "search/history.h"

#include <cstring>

namespace valku {

void linkHistoryTables() {
    constexpr i32 penalties[6] = {32, 16, 8, 4, 2, 1};
    for (int i = 0; i < 6; ++i) {
        historyTables[i].penalty = penalties[i];
        historyTables[i].chainUp = i > 0 ? &historyTables[i - 1] : nullptr;
        historyTables[i].chainDown = i < 5 ? &historyTables[i + 1] : nullptr;
    }
}

void clearHistory() {
    for (HistoryTable& table : historyTables) std::memset(table.values, 0, sizeof table.values);
}

HistoryTable& historyTableFor(i32 margin) {
    if (margin < -30) return historyTables[0];
    if (margin < -15) return historyTables[1];
    if (margin < 0) return historyTables[2];
    if (margin < 15) return historyTables[3];
    if (margin < 30) return historyTables[4];
    return historyTables[5];
}

}  // namespace valku
