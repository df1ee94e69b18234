#include "eval/eval_tables.h"

#include <algorithm>
#include <cmath>

#include "eval/weights.h"

namespace valku {

namespace {

// Diagrams show the board as White sees it: a8 first, h1 last.
constexpr SideTable<i8> fromDiagram(const i8 (&diagram)[64]) {
    SideTable<i8> table{};
    for (int rank = 0; rank < 8; ++rank) {
        for (int file = 0; file < 8; ++file) {
            const int square = makeSquare(file, rank);
            const i8 value = diagram[(7 - rank) * 8 + file];
            table.cells[White][square] = value;
            table.cells[Black][mirrorRank(square)] = value;
        }
    }
    return table;
}

// Grids give values by distance: a row for each rank, a column for each file, from 0 to 4.
constexpr ByDifference fromGrid(const i8 (&grid)[5][5]) {
    ByDifference table{};
    for (int ranks = -4; ranks <= 4; ++ranks) {
        for (int files = -4; files <= 4; ++files) {
            table.cells[ranks * 16 + files + 119] =
                grid[ranks < 0 ? -ranks : ranks][files < 0 ? -files : files];
        }
    }
    return table;
}

// The length of a diagonal ray that starts `ranks` and `files` away from its target and goes a rank down and
// a file in the direction of `fileStep` with each step. It ends one file past the target. A ray that reaches
// the target's rank more than one file short of the target, or more than three past it, has length 0.
constexpr int rayLength(int ranks, int files, int fileStep) {
    const int past = (files + ranks * fileStep) * fileStep;  // how far past the target's file on its rank
    if (ranks <= 0 || past < -1 || past > 3) return 0;
    return std::min(ranks, 1 - files * fileStep);
}

constexpr ByDifference rayLengths(int fileStep) {
    ByDifference table{};
    for (int ranks = -7; ranks <= 7; ++ranks) {
        for (int files = -7; files <= 7; ++files) {
            table.cells[ranks * 16 + files + 119] = static_cast<i8>(rayLength(ranks, files, fileStep));
        }
    }
    return table;
}

template <Color Us>
constexpr void fillPathObstacles(PathObstacles& table) {
    constexpr bool white = Us == White;
    u8* const own = table.cells[Us];
    own[white ? WhitePawn : BlackPawn] = 30;
    own[white ? WhiteKnight : BlackKnight] = 15;
    own[white ? WhiteBishop : BlackBishop] = 15;
    own[white ? WhiteRook : BlackRook] = 15;
    own[white ? WhiteQueen : BlackQueen] = 15;
    own[white ? WhiteKing : BlackKing] = 15;
    own[white ? BlackKnight : WhiteKnight] = 30;
    own[white ? BlackBishop : WhiteBishop] = 36;
    own[white ? BlackRook : WhiteRook] = 24;
    own[white ? BlackQueen : WhiteQueen] = 18;
}

constexpr PathObstacles pathObstacles() {
    PathObstacles table{};
    fillPathObstacles<White>(table);
    fillPathObstacles<Black>(table);
    return table;
}

}  // namespace

// clang-format off
constexpr SideTable<i8> knightSquare = fromDiagram({
    -35, -35, -35, -35, -35, -35, -35, -35,
    -21, -21, -21, -21, -21, -21, -21, -21,
    -14,   0,  14,  21,  21,  21,   7,   0,
     -7,   0,  14,  14,  14,  14,   7,   0,
    -14, -21,   7,  14,  14,   7,  -7,  -7,
    -14,   0,  14,   0,   0,  14,   0, -14,
    -21, -28, -14,   7,   7, -14, -28, -21,
    -21, -21, -21, -21, -21,   0, -21, -21,
});

constexpr SideTable<i8> bishopSquare = fromDiagram({
    -28, -28, -28, -28, -28, -28, -28, -28,
    -21, -14, -14, -14, -14, -14, -14, -21,
      0,   7,  14,  21,  21,  21,  14,  14,
      0,   7,   7,   7,   7,   7,   7,   0,
      7,   0,  14,   7,   7,  14,   0,   7,
      0,  14,   7,  14,  14,   7,  14,   0,
      0,   7,   0,   0,   7,   0,   7,   0,
     -7, -14, -14, -14, -14, -14, -14,  -7,
});

constexpr SideTable<i8> knightOutpost = fromDiagram({
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,  18,  20,  20,  18,   0,   0,
      0,   0,  15,  17,  17,  15,   0,   0,
      0,   0,   8,  11,  11,   8,   0,   0,
      0,   0,   5,   5,   5,   5,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
});

constexpr SideTable<i8> bishopOutpost = fromDiagram({
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,  15,  19,  19,  15,   0,   0,
      0,   0,  11,  15,  15,  11,   0,   0,
      0,   0,   7,  11,  11,   7,   0,   0,
      0,   0,   4,   4,   4,   4,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
});

constexpr SideTable<i8> kingMiddlegame = fromDiagram({
    -38, -33, -38, -48, -48, -38, -33, -38,
    -38, -33, -38, -48, -48, -38, -33, -38,
    -38, -33, -38, -48, -48, -38, -33, -38,
    -38, -33, -38, -48, -48, -38, -33, -38,
    -38, -33, -38, -48, -48, -38, -33, -38,
     -8,  -3,  -8, -18, -18,  -8,  -3,  -8,
      7,  12,   7,  -3,  -3,   7,  12,   7,
     10,  15,  10,   0,   0,  10,  15,  10,
});

constexpr SideTable<i8> kingEndgame = fromDiagram({
    -50, -35, -25, -15, -15, -25, -35, -50,
    -35, -15,  -8,   0,   0,  -8, -15, -35,
    -25,  -8,   0,   8,   8,   0,  -8, -25,
    -15,   0,   8,  15,  15,   8,   0, -15,
    -15,   0,   8,  15,  15,   8,   0, -15,
    -25,  -8,   0,   8,   8,   0,  -8, -25,
    -35, -15,  -8,   0,   0,  -8, -15, -35,
    -50, -35, -25, -15, -15, -25, -35, -50,
});

constexpr ByDifference knightAttackWeight = fromGrid({
    {0, 2, 3, 2, 2},
    {1, 1, 4, 3, 0},
    {3, 4, 4, 3, 1},
    {3, 4, 2, 2, 0},
    {3, 2, 2, 0, 0},
});

constexpr ByDifference knightDefenceWeight = fromGrid({
    { 0, -2, -2, 0, 0},
    {-1, -1, -1, 0, 0},
    {-2, -2, -1, 0, 0},
    {-1, -1, -1, 0, 0},
    { 0,  0,  0, 0, 0},
});

constexpr ByDifference bishopDefenceWeight = fromGrid({
    { 0, -2, -1, 0, 0},
    {-2, -1, -1, 0, 0},
    {-1, -2, -1, 0, 0},
    { 0,  0,  0, 0, 0},
    { 0,  0,  0, 0, 0},
});

constexpr i32 passedPawnValue[8]      = {0, 15, 15, 40, 70, 110, 160, 0};
constexpr i32 connectedPasserValue[8] = {0,  0,  5, 10, 20,  35,  50, 0};

constexpr u8 passerKingBlock[64] = {
     0, 85, 85, 85, 85, 85, 85,
    85, 75, 80, 85, 85, 85, 85,
    85, 20, 45, 70, 80, 85, 85,
    85,  5, 15, 40, 60, 75, 85,
    85,  0,  5, 15, 40, 60, 75,
    85,  0,  0,  5, 15, 40, 60,
    75,  0,  0,  0,  5, 15, 40,
    60,  0,  0,  0,  0,  5, 15,
    40,  0,  0,  0,  0,  0,  5, 5,
};
// clang-format on

constexpr ByDifference rayLengthWest = rayLengths(-1);
constexpr ByDifference rayLengthEast = rayLengths(1);

constexpr PathObstacles pathObstacle = pathObstacles();

i32 kingAttackTable[kingAttackTableSize];
i32 kingSupportTable[8][4];

void updateKingAttackTable() {
    // Far above the value of all men, but sums of a few such costs stay inside 32 bits.
    constexpr double largestAttackCost = 10'000'000;
    for (int count = 0; count < kingAttackTableSize; ++count) {
        const double cost = std::pow(count, 2.1) * 0.5 + 2 * count;
        kingAttackTable[count] =
            static_cast<i32>(std::clamp(cost * kingSafety / 100, -largestAttackCost, largestAttackCost));
    }
}

void initEvalTables() {
    for (int rank = 0; rank < 8; ++rank) {
        for (int offset = 0; offset < 4; ++offset) {
            kingSupportTable[rank][offset] = static_cast<i32>(offset * std::pow(rank, 2.2) + 5 * rank);
        }
    }
    updateKingAttackTable();
    updateDerivedMaterial();
}

}  // namespace valku
