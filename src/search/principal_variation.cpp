#include "search/principal_variation.h"

#include <algorithm>

#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "search/hash_table.h"

namespace valku {

namespace {

constexpr int longestRebuiltLine = 41;

bool isGenerated(const Position& position, Move move) {
    MoveList list;
    generateAllMoves(position, list);
    return std::find(list.moves, list.moves + list.count, move) != list.moves + list.count;
}

}  // namespace

void rebuildPv(const Position& position, Line& pv) {
    Position walk(position);
    u64 seen[longestRebuiltLine];
    int length = 0;
    while (length < longestRebuiltLine) {
        const StateRecord& state = *walk.state;
        const u64 key = u64{state.hashHigh} << 32 | state.hashLow;
        if (std::find(seen, seen + length, key) != seen + length) break;
        seen[length] = key;
        const Move move = readPvMove(state);
        if (move == nullMove || !isGenerated(walk, move)) break;
        pv.moves[length++] = move;
        makeMove(walk, move);
    }
    pv.moves[length] = nullMove;
}

}  // namespace valku
