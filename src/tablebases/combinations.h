#pragma once

#include <array>
#include <utility>

#include "chess/types.h"
#include "tablebases/board64.h"

// Men of one type have no order: n of them on numbered squares are one number of the combinatorial number
// system of degree n (https://en.wikipedia.org/wiki/Combinatorial_number_system).

namespace valku {

// Ways to choose 0 to 3 of n.
constexpr auto choose = [] {
    std::array<std::array<u32, 4>, tbSquares + 1> ways{};
    for (u32 n = 0; n <= tbSquares; ++n) {
        ways[n][0] = 1;
        for (u32 k = 1; n > 0 && k < 4; ++k) ways[n][k] = ways[n - 1][k - 1] + ways[n - 1][k];
    }
    return ways;
}();

// C(x3, 3) + C(x2, 2) + x1 of 1 to 3 elements, which are sorted in place to x1 < x2 < x3.
inline u32 combinationNumber(u8* elements, int count) {
    if (count == 1) return elements[0];
    if (elements[0] > elements[1]) std::swap(elements[0], elements[1]);
    if (count == 2) return choose[elements[1]][2] + elements[0];
    if (elements[1] > elements[2]) std::swap(elements[1], elements[2]);
    if (elements[0] > elements[1]) std::swap(elements[0], elements[1]);
    return choose[elements[2]][3] + choose[elements[1]][2] + elements[0];
}

// The reverse, in rising order.
inline void combinationOfNumber(u32 number, u8* elements, u8 count) {
    for (u8 k = count; k > 0; --k) {
        u8& largest = elements[k - 1];
        for (largest = static_cast<u8>(k - 1); choose[largest + 1u][k] <= number; ++largest) continue;
        number -= choose[largest][k];
    }
}

}  // namespace valku
