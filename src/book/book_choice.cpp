#include "book/book_choice.h"

#include <algorithm>
#include <random>

#include "book/book_settings.h"
#include "book/opening_book.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "platform/clock.h"
#include "search/process_state.h"
#include "search/search_control.h"
#include "search/search_ports.h"
#include "search/stop_word.h"
#include "search/thinking_state.h"

namespace valku {

namespace {

constexpr u32 randomRange = 32767;

std::mt19937 generator;

// A number from 0 to below `sum`.
i64 randomBelow(i64 sum) {
    const double share = (static_cast<u32>(generator()) & randomRange) / static_cast<double>(randomRange);
    return std::min(static_cast<i64>(share * static_cast<double>(sum)), sum - 1);
}

// Null if the weights leave nothing to pick from.
const BookMove* pickMove(const std::vector<BookMove>& moves) {
    u8 best = worstBookValue + 1;
    for (const BookMove& move : moves) best = std::min(best, move.value);
    const auto weightOf = [&](const BookMove& move) -> i64 {
        return BestBookMovesOnly && move.value != best ? 0 : bookWeights[move.value];
    };

    i64 sum = 0;
    for (const BookMove& move : moves) sum += weightOf(move);
    if (sum <= 0) return nullptr;
    i64 pick = randomBelow(sum) + 1;
    for (const BookMove& move : moves) {
        pick -= weightOf(move);
        if (pick <= 0) return &move;
    }
    return nullptr;
}

// The move stands ready; timeUsedUp lets whoever ends the pondering end the wait at once.
void awaitEndOfPondering() {
    timeUsedUp = true;
    while (pondering && !stopSignalOutside()) sleepMilliseconds(1);
    timeUsedUp = false;
}

}  // namespace

void seedBookChoice(u64 seed) {
    generator.seed(static_cast<std::mt19937::result_type>(seed ^ seed >> 32));
}

bool tryBookMove() {
    if (analyzing) return false;
    const std::vector<BookMove> moves = bookMoves(gamePosition.state->hashHigh, gamePosition.state->hashLow);
    const BookMove* picked = pickMove(moves);
    if (!picked) return false;
    // Another position with the same 48 bits may have given an impossible move.
    const Move move = withPromotion(findLegalMove(picked->from, picked->to, gamePosition), picked->promotion);
    if (move == nullMove) return false;

    minimalSearchPending = false;
    if (pondering) awaitEndOfPondering();
    noAutoPonder = true;
    if (abortThinking || (pondering && protocolMode != protocolUci)) return true;
    answerGiven = true;
    searchPorts.observer->moveChosen(move);
    changeGame([&] { playGameMove(move); });
    searchPorts.observer->bookMoveMade(move, static_cast<char>(picked->value));
    return true;
}

}  // namespace valku
