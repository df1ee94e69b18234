#include "tools/position_values.h"

#include "eval/evaluate.h"
#include "search/quiescence.h"
#include "search/search_job.h"
#include "search/stop_word.h"

namespace valku {

namespace {

void setUp(const Position& position) {
    searchPosition = position;
    computeRootMobility();
}

}  // namespace

i32 staticValue(const Position& position) {
    setUp(position);
    const i32 value = evaluate();
    return position.sideToMove == White ? value : -value;
}

i32 quiescenceValue(const Position& position) {
    setUp(position);
    clearAllStops();  // what has ended the last search would end this one
    return quiescePv(1, -mateScore, mateScore, 0);
}

}  // namespace valku
