#pragma once

#include "chess/side.h"

// The steps of the pieces as differences of squares, in the order in which the generators try them. The order
// fixes the sequence of moves in a list, and with it the search.

namespace valku {

template <Color Us>
struct Steps;

template <>
struct Steps<White> {
    static constexpr int knight[8] = {+31, +33, +14, +18, -33, -31, -18, -14};
    static constexpr int bishop[4] = {+15, +17, -17, -15};
    static constexpr int rook[4] = {+16, -1, +1, -16};
    static constexpr int king[8] = {+15, +16, +17, -1, +1, -17, -16, -15};
};

template <>
struct Steps<Black> {
    static constexpr int knight[8] = {-33, -31, -18, -14, +31, +33, +14, +18};
    static constexpr int bishop[4] = {-17, -15, +15, +17};
    static constexpr int rook[4] = {-16, -1, +1, +16};
    static constexpr int king[8] = {-17, -16, -15, -1, +1, +15, +16, +17};
};

}  // namespace valku
