#pragma once

#include <array>

#include "chess/types.h"

// Mobility weights: the value of each square that a piece can reach, in hundredths of a pawn, which
// generateCaptures() sums up. Given for White with rank 8 on top; mirrored for Black.

namespace valku {

using MobilityTable = std::array<i8, 128>;

template <Color Us>
constexpr MobilityTable makeMobilityTable(const int (&rows)[8][8]) {
    MobilityTable table{};
    for (int rank = 0; rank < 8; ++rank) {
        for (int file = 0; file < 8; ++file) {
            const int row = Us == White ? 7 - rank : rank;
            table[static_cast<std::size_t>(makeSquare(file, rank))] = static_cast<i8>(rows[row][file]);
        }
    }
    return table;
}

// clang-format off
constexpr int knightMobilityRows[8][8] = {
    {2, 4, 4, 6, 6, 4, 4, 2},
    {0, 2, 4, 6, 6, 4, 2, 0},
    {2, 4, 6, 8, 8, 6, 4, 2},
    {2, 4, 6, 6, 6, 6, 4, 2},
    {0, 0, 4, 6, 6, 4, 0, 0},
    {0, 2, 4, 4, 4, 4, 2, 0},
    {0, 0, 2, 4, 4, 2, 0, 0},
    {0, 0, 2, 0, 0, 2, 0, 0},
};

constexpr int bishopMobilityRows[8][8] = {
    {4, 4, 4, 4, 4, 4, 4, 4},
    {0, 4, 4, 4, 4, 4, 4, 0},
    {2, 4, 6, 8, 8, 6, 4, 2},
    {2, 4, 6, 6, 6, 6, 4, 2},
    {0, 0, 6, 6, 6, 6, 0, 0},
    {0, 4, 4, 6, 6, 4, 4, 0},
    {0, 4, 2, 2, 2, 2, 4, 0},
    {0, 0, 0, 0, 0, 0, 0, 0},
};

constexpr int rookMobilityRows[8][8] = {
    {4, 4, 6, 8, 8, 6, 4, 4},
    {4, 4, 6, 8, 8, 6, 4, 4},
    {2, 2, 4, 6, 6, 4, 2, 2},
    {2, 2, 4, 6, 6, 4, 2, 2},
    {2, 2, 2, 4, 4, 2, 2, 2},
    {2, 2, 2, 4, 4, 2, 2, 2},
    {0, 0, 2, 4, 4, 2, 0, 0},
    {0, 0, 2, 4, 4, 2, 0, 0},
};

constexpr int queenMobilityRows[8][8] = {
    {2, 2, 2, 2, 2, 2, 2, 2},
    {2, 4, 4, 4, 4, 4, 4, 2},
    {0, 2, 4, 4, 4, 4, 2, 0},
    {0, 0, 2, 4, 4, 2, 0, 0},
    {0, 0, 2, 4, 4, 2, 0, 0},
    {0, 0, 2, 2, 2, 2, 0, 0},
    {0, 0, 2, 2, 2, 2, 0, 0},
    {0, 0, 0, 0, 0, 0, 0, 0},
};
// clang-format on

template <Color Us>
inline constexpr MobilityTable knightMobility = makeMobilityTable<Us>(knightMobilityRows);
template <Color Us>
inline constexpr MobilityTable bishopMobility = makeMobilityTable<Us>(bishopMobilityRows);
template <Color Us>
inline constexpr MobilityTable rookMobility = makeMobilityTable<Us>(rookMobilityRows);
template <Color Us>
inline constexpr MobilityTable queenMobility = makeMobilityTable<Us>(queenMobilityRows);

}  // namespace valku
