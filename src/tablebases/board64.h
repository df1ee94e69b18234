#pragma once

#include <bit>

#include "chess/types.h"

// The board as tables number it: squares 0 (a1) to 63 (h8), rank * 8 + file, and sets of squares as 64 bits.
// The engine's own board is 16 squares wide (chess/position.h).

namespace valku {

constexpr int tbSquares = 64;

constexpr int file64(int square) {
    return square & 7;
}
constexpr int rank64(int square) {
    return square >> 3;
}

constexpr u64 bitOf(int square) {
    return u64{1} << square;
}

// Calls use(square) from a1 up.
template <class Use>
void forEachSquare(u64 squares, Use use) {
    for (; squares; squares &= squares - 1) use(std::countr_zero(squares));
}

// Reflections, applied to a square by exclusive or.
constexpr u8 mirrorFiles = 7;
constexpr u8 mirrorRanks = 56;

// The reflection that brings the square to files a to d, and the one that brings it to a1 to d4.
constexpr u8 foldFile(u8 square) {
    return file64(square) >= 4 ? mirrorFiles : 0;
}
constexpr u8 foldBoth(u8 square) {
    return static_cast<u8>(foldFile(square) | (rank64(square) >= 4 ? mirrorRanks : 0));
}

// Reflection in the diagonal a1-h8.
constexpr u8 transposeSquare(u8 square) {
    return static_cast<u8>(file64(square) * 8 + rank64(square));
}

}  // namespace valku
