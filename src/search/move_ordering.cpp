#include "search/move_ordering.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "chess/attacks.h"
#include "chess/exchange.h"
#include "chess/piece_values.h"
#include "chess/position.h"
#include "chess/random.h"

namespace valku {

namespace {

// The bases of a tag, from the hash move down.
constexpr i32 hashMoveTag = 0x40000000;
constexpr i32 discoveringCaptureTag = 0x34000000;  // with a victim that reaches the margin
constexpr i32 goodCaptureTag = 0x30000000;
constexpr i32 smallDiscoveringCaptureTag = 0x14000000;
constexpr i32 evenCaptureTag = 0x10000000;
constexpr i32 quietDiscoveredCheckTag = 0x0C000000;
constexpr i32 safeQuietTag = 0x08000000;
constexpr i32 losingTag = 0;

// Additions.
constexpr i32 killer1Bonus = 0x2000000;
constexpr i32 killer2Bonus = 0x1000000;
constexpr i32 directCheckBonus = 0x800000;
constexpr i32 goodHistoryBonus = 0x200000;

[[gnu::always_inline]] inline i32 tagMove(const SearchFrame& frame, const HistoryTable& table, i32 margin,
                                          i32 safeLimit, Move hashMove, Move move) {
    if (move == hashMove) return hashMoveTag;
    const Position& p = searchPosition;
    const int to = moveTo(move);
    const u8 mover = p.board[moveFrom(move)];
    const bool quiet = p.board[to] == empty;

    i32 tag;
    if (givesDiscoveredCheck(move)) {
        if (!quiet) {
            const i32 victim = pieceValueByCode[p.board[to]];
            return (victim >= margin ? discoveringCaptureTag : smallDiscoveringCaptureTag) + victim;
        }
        tag = quietDiscoveredCheckTag;
    } else if (quiet) {
        // Only the sign of the exchange against the limit matters here: the bounded evaluation is cheaper.
        tag = exchangeBound(move, safeLimit) >= safeLimit ? safeQuietTag : losingTag;
    } else if (const i32 exchange = staticExchange(move); exchange < safeLimit) {
        tag = losingTag;
    } else {
        tag = exchange >= margin ? goodCaptureTag + std::max(exchange, 0) : evenCaptureTag;
    }

    if (moveTo(frame.killer1Move) == to && frame.killer1Piece == mover) tag += killer1Bonus;
    if (moveTo(frame.killer2Move) == to && frame.killer2Piece == mover) tag += killer2Bonus;
    if (givesDirectCheck(move)) tag += directCheckBonus;
    const i32 history = table.values[mover][to];
    if (history > 0) tag += goodHistoryBonus;
    return tag + std::clamp(history, -tagHistoryOffset, tagHistoryLimit - tagHistoryOffset) +
           tagHistoryOffset;
}

}  // namespace

void tagMoves(SearchFrame& frame, const HistoryTable& table, i32 margin, Move hashMove) {
    // A loss of no more than the difference between knight and bishop counts as an even exchange.
    const i32 safeLimit = -std::abs(knightValue - bishopValue);
    MoveList& list = frame.list;
    for (i32 i = 0; i < list.count; ++i) {
        list.scores[i] = tagMove(frame, table, margin, safeLimit, hashMove, list.moves[i]);
    }
}

void sortByTag(MoveList& list) {
    // Tag and move travel together; only the tag is compared, so that equal tags keep their order.
    struct Entry {
        i32 tag;
        Move move;
    };
    Entry sorted[maxMoves];
    for (i32 i = 0; i < list.count; ++i) {
        const Entry entry{list.scores[i], list.moves[i]};
        i32 place = i;
        for (; place > 0 && sorted[place - 1].tag < entry.tag; --place) sorted[place] = sorted[place - 1];
        sorted[place] = entry;
    }
    for (i32 i = 0; i < list.count; ++i) {
        list.scores[i] = sorted[i].tag;
        list.moves[i] = sorted[i].move;
    }
}

void shuffleMoves(MoveList& list, i32 first, i32 last) {
    for (i32 i = first; i < last; ++i) {
        const i32 rest = last - i;
        const i32 chosen = i + std::min(static_cast<i32>(nextRandom() * (rest + 1)), rest);
        std::swap(list.moves[i], list.moves[chosen]);
        std::swap(list.scores[i], list.scores[chosen]);
    }
}

}  // namespace valku
