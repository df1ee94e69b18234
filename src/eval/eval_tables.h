#pragma once

#include "chess/types.h"

// The tables of the evaluation. All values are hundredths of a pawn unless a comment says otherwise.

namespace valku {

// A table by square, held for both colours: Black's half is White's turned upside down, so that both read it
// with the real square.
template <class T>
struct SideTable {
    T cells[2][128];

    template <Color Us>
    constexpr i32 at(int square) const {
        return cells[Us][square];
    }
};

// A table by the difference of two squares of the board, -119 to 119. A difference determines the distances
// in files and ranks.
struct ByDifference {
    i8 cells[239];

    constexpr i32 operator[](int difference) const { return cells[difference + 119]; }
};

// Where the pieces stand well.
extern const SideTable<i8> knightSquare;
extern const SideTable<i8> bishopSquare;
extern const SideTable<i8> knightOutpost;  // 0 where a man can be no outpost
extern const SideTable<i8> bishopOutpost;
extern const SideTable<i8> kingMiddlegame;
extern const SideTable<i8> kingEndgame;

// Points towards an attack on a king, by the difference of the king's square and the piece's. The defence
// weights are for a piece near its own king, and are negative.
extern const ByDifference knightAttackWeight;
extern const ByDifference knightDefenceWeight;
extern const ByDifference bishopDefenceWeight;

// How many steps a diagonal walk from square `a` down towards the rank of `b` can take and still end near
// `b`, by `a - b`; 0 or less if it misses. West steps go to lower files.
extern const ByDifference rayLengthWest;
extern const ByDifference rayLengthEast;

// What a king's attack count costs its side; see updateKingAttackTable().
constexpr int kingAttackTableSize = 100;
extern i32 kingAttackTable[kingAttackTableSize];

// Passed pawns, by rank seen from the pawn's side, 0 to 7.
extern const i32 passedPawnValue[8];
extern const i32 connectedPasserValue[8];
extern i32 kingSupportTable[8][4];  // second index: ranks from one behind the pawn to the own king

// How much of a passed pawn the enemy king takes away, in 128ths: by 7 times the file distance plus the
// pawn's steps to its last square when the king is ahead; 7 further on when it is level.
extern const u8 passerKingBlock[64];

// How much a man on the pawn's path takes away, in 128ths, by its code.
struct PathObstacles {
    u8 cells[2][256];

    template <Color Us>
    constexpr i32 at(u8 code) const {
        return cells[Us][code];
    }
};
extern const PathObstacles pathObstacle;

// Rebuilds kingAttackTable; to be called after a change of the weight kingSafety. Only between searches.
void updateKingAttackTable();

// Fills every computed table of the evaluation and the derived material values. Once, before the first thread
// starts.
void initEvalTables();

}  // namespace valku
