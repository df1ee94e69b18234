#pragma once

#include <array>
#include <utility>
#include <vector>

#include "chess/types.h"
#include "tablebases/board64.h"
#include "tablebases/material_classes.h"

// An ending: all positions of a material class, both sides to move, while its tables are made. Their
// numbering is made for speed and is not that of the table files: the king pair, reduced by symmetry, then
// six bits for the square of each man, so that a man's move changes only its own bits. Impossible positions,
// such as two men on one square, have numbers too.

namespace valku {

constexpr int maxEndingMen = 3;  // besides the kings

// The men besides the kings in the order of the class's name: the first side's, strongest first, then the
// other's.
struct EndingMaterial {
    int count = 0;
    TbType type[maxEndingMen];
    int side[maxEndingMen];
};

EndingMaterial materialOfClass(int tbClass);

// A capture, a promotion, or both: men of an EndingMaterial, -1 for none.
struct MaterialChange {
    int captured;
    int promoted;
    TbType promotion;  // tbPawn if none promotes
};

// All changes that one move can make.
std::vector<MaterialChange> changesOf(const EndingMaterial& material);

// The class after a change, and whether its first-named side is the second-named one here.
std::pair<int, bool> classAfter(const EndingMaterial& material, MaterialChange change);

struct Placement {
    u8 kings[2];  // by side
    u8 men[maxEndingMen];
};

using SquareMap = std::array<u8, 64>;

// The pairs of kings that do not touch, one for all that the symmetries of the board make of it: eight
// symmetries if the class has no pawns, otherwise the two that exchange left and right.
struct EndingKings {
    static constexpr u16 none = 0xFFFF;

    u16 number[64][64];             // none for kings that touch
    const SquareMap* onto[64][64];  // the symmetry that brings these kings to the squares of that number
    std::vector<std::array<u8, 2>> squares;
    // The symmetry that keeps both kings of a number in place, null if there is none.
    std::vector<const SquareMap*> mirror;

    explicit EndingKings(int symmetries);
};

// What is known of a position, for the side to move: 0 is nothing, which in the end means a draw; n up to 126
// a win in n moves; stateFirstLoss + n a loss in n moves, 0 being mated. Until the class is solved a win may
// still turn out to be faster; a loss is final.
using EndingState = u8;
constexpr EndingState stateUnknown = 0;
constexpr EndingState stateFirstLoss = 128;
constexpr EndingState stateCandidate = 254;  // until solved: possibly a loss
constexpr EndingState stateIllegal = 255;
constexpr int maxDistance = 125;  // moves

constexpr bool isWin(EndingState state) {
    return state > stateUnknown && state < stateFirstLoss;
}
constexpr bool isLoss(EndingState state) {
    return state >= stateFirstLoss && state < stateCandidate;
}
constexpr EndingState winIn(int moves) {
    return static_cast<EndingState>(moves);
}
constexpr EndingState lossIn(int moves) {
    return static_cast<EndingState>(stateFirstLoss + moves);
}
constexpr int distanceOf(EndingState state) {
    return state & 127;
}

// The byte of a table for the state, and back.
constexpr i8 unusedTableByte = 127;
i8 tableByteOf(EndingState state);
EndingState stateOfTableByte(i8 byte);

struct Ending {
    explicit Ending(int number);

    u32 pairCount() const { return static_cast<u32>(kings.squares.size()); }
    u32 pairSize() const { return 1u << (6 * material.count); }
    int shiftOf(int man) const { return 6 * (material.count - 1 - man); }
    u32 indexOf(u32 pair, const SquareMap& onto, const u8 (&men)[maxEndingMen]) const {
        u32 index = pair;
        for (int man = 0; man < material.count; ++man) index = index << 6 | onto[men[man]];
        return index;
    }
    // The kings must not touch.
    u32 indexOf(const Placement& p) const {
        return indexOf(kings.number[p.kings[0]][p.kings[1]], *kings.onto[p.kings[0]][p.kings[1]], p.men);
    }
    Placement placementOf(u32 index) const;

    EndingState stateOf(int sideToMove, const Placement& p) const {
        if (kings.number[p.kings[0]][p.kings[1]] == EndingKings::none) return stateIllegal;
        return states[sideToMove][indexOf(p)];
    }

    // Marks the illegal positions of a king pair: men on one square, pawns on the first or last rank, the
    // king of the side not to move in check. The others become unknown.
    void markIllegal(int sideToMove, u32 pair);

    int tbClass;
    EndingMaterial material;
    const EndingKings& kings;
    std::vector<EndingState> states[2];  // by side to move
};

// Kings included.
u64 occupiedSquares(const EndingMaterial& material, const Placement& p);

// Does a man of `side` other than its king attack the square?
bool attacks(const EndingMaterial& material, const Placement& p, int side, int square, u64 occupied);

// The table of one side to move of a solved ending. Entries that no legal position has hold unusedTableByte,
// as does the tail for positions with a right to capture en passant.
std::vector<u8> tableBytes(const Ending& ending, int side, int threads);

// Sets the states for one side to move from its table.
void readStates(Ending& ending, int side, const std::vector<u8>& bytes, int threads);

}  // namespace valku
