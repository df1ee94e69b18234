#include "book/book_choice.h"

#include <algorithm>
#include <random>

namespace valku {

namespace {

std::mt19937 generator;

// A number from 0 to below `sum`. The generator is cut to 15 bits, both ends of its range included.
i64 randomBelow(i64 sum) {
    constexpr u32 randomRange = 32767;
    const double share = (static_cast<u32>(generator()) & randomRange) / static_cast<double>(randomRange);
    return std::min(static_cast<i64>(share * static_cast<double>(sum)), sum - 1);
}

}  // namespace

void seedBookChoice(u64 seed) {
    generator.seed(static_cast<std::mt19937::result_type>(seed ^ seed >> 32));
}

std::optional<BookMove> pickBookMove(const Position& position) {
    const std::vector<BookMove> moves = bookMoves(position.state->hashHigh, position.state->hashLow);
    u8 best = worstBookValue + 1;
    for (const BookMove& move : moves) best = std::min(best, move.value);
    const auto weightOf = [&](const BookMove& move) -> i64 {
        return BestBookMovesOnly && move.value != best ? 0 : bookWeights[move.value];
    };

    i64 sum = 0;
    for (const BookMove& move : moves) sum += weightOf(move);
    if (sum <= 0) return std::nullopt;
    i64 pick = randomBelow(sum) + 1;
    for (const BookMove& move : moves) {
        pick -= weightOf(move);
        if (pick <= 0) return move;
    }
    return std::nullopt;
}

}  // namespace valku
