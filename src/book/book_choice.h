#pragma once

#include <array>
#include <optional>

#include "book/opening_book.h"
#include "chess/position.h"
#include "platform/shared_value.h"

// The random pick among the book moves of a position.

namespace valku {

// How often a move is picked, by the letter of its value. Settings, written at start-up.
inline std::array<i32, 256> bookWeights = [] {
    std::array<i32, 256> weights{};
    weights['a'] = 900;
    weights['b'] = 400;
    weights['c'] = 100;
    weights['d'] = 1;
    return weights;
}();

// Only moves of the best value in a position are picked. A setting, written by the thread that reads the
// commands at any time.
inline SharedFlag BestBookMovesOnly{true};

// Every process makes picks of its own.
void seedBookChoice(u64 seed);

// Picks a move of the position by the weights of the values. Nothing if the book has none of a weight above
// 0. The move may be illegal: the book knows a position by 48 bits of its key only. For the thinking thread.
std::optional<BookMove> pickBookMove(const Position& position);

}  // namespace valku
