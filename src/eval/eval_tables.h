#pragma once

#include "chess/types.h"

// The tables of the evaluation. Values are hundredths of a pawn unless a comment says otherwise.

namespace valku {

// A piece-square table for both colors: Black's half is White's mirrored vertically, so that both are indexed
// by the real square (https://www.chessprogramming.org/Piece-Square_Tables).
template <class T>
struct SideTable {
    T cells[2][128];

    template <Color Us>
    constexpr i32 at(int square) const {
        return cells[Us][square];
    }
};

// A table by the difference of two squares, -119 to 119, which determines their distance in files and ranks.
struct ByDifference {
    i8 cells[239];

    constexpr i32 operator[](int difference) const { return cells[difference + 119]; }
};

extern const SideTable<i8> knightSquare;
extern const SideTable<i8> bishopSquare;
extern const SideTable<i8> knightOutpost;  // 0 where a piece cannot be an outpost
extern const SideTable<i8> bishopOutpost;
extern const SideTable<i8> kingMiddlegame;
extern const SideTable<i8> kingEndgame;

// Attack units, by the king's square minus the piece's. The defence weights are for a piece near its own king
// and are negative.
extern const ByDifference knightAttackWeight;
extern const ByDifference knightDefenceWeight;
extern const ByDifference bishopDefenceWeight;

// By `a - b`: the number of steps that a diagonal ray from square `a` down the board takes until it leaves
// the neighborhood of `b`; 0 or less if it misses. The west ray goes to lower files.
extern const ByDifference rayLengthWest;
extern const ByDifference rayLengthEast;

// What the attack units against its king cost a side; see updateKingAttackTable().
constexpr int kingAttackTableSize = 100;
extern i32 kingAttackTable[kingAttackTableSize];

// Passed pawns, by relative rank, 0 to 7.
extern const i32 passedPawnValue[8];
extern const i32 connectedPasserValue[8];
extern i32 kingSupportTable[8][4];  // second index: the own king's rank relative to the pawn's, plus 1

// The part of a passed pawn's value that the enemy king takes away, in 128ths: by 7 times the distance in
// files plus the pawn's steps to its last square if the king is ahead of the pawn; 7 entries further if it is
// level.
extern const u8 passerKingBlock[64];

// The part that a man on the pawn's path takes away, in 128ths, by its code.
struct PathObstacles {
    u8 cells[2][256];

    template <Color Us>
    constexpr i32 at(u8 code) const {
        return cells[Us][code];
    }
};
extern const PathObstacles pathObstacle;

// Recomputes kingAttackTable; to be called after a change of the weight kingSafety. Only between searches.
void updateKingAttackTable();

// Fills every computed table of the evaluation and the derived material values. Once, before the second
// thread starts.
void initEvalTables();

}  // namespace valku
