#pragma once

#include <array>
#include <bit>
#include <utility>
#include <vector>

#include "chess/types.h"
#include "tablebases/index_plan.h"
#include "tablebases/table_classes.h"

// All positions of a material class while its tables are made. They are numbered for speed and not as in the
// table files: a pair of kings reduced by symmetry, then six bits for the square of each man, so that a man's
// move changes its bits alone. Men on one square and other nonsense have numbers too. Squares are 0 to 63.

namespace valku {

constexpr int maxEndingMen = 3;  // besides the kings

inline const TbClass& recordOf(int tbClass) {
    return classTable[static_cast<std::size_t>(tbClass)];
}

// The men besides the kings in the order of the class's name: the first side's, strongest first, then the
// other's.
struct EndingMaterial {
    int count = 0;
    TbType type[maxEndingMen];
    int side[maxEndingMen];
};

EndingMaterial materialOfClass(int tbClass);

// What becomes of the material when a man is captured, a pawn promotes, or both. -1 stands for none.
struct Change {
    int captured;
    int promoted;
    TbType promotion;  // tbPawn if none promotes
};

// All changes that one move can make.
std::vector<Change> changesOf(const EndingMaterial& material);

// The class after a change, and whether its first-named side is the second-named one here.
std::pair<int, bool> classAfter(const EndingMaterial& material, Change change);

struct Placement {
    u8 kings[2];  // by side
    u8 men[maxEndingMen];
};

using SquareMap = std::array<u8, 64>;

// The pairs of kings that are not next to each other, without those that a symmetry of the board makes of
// others: all eight symmetries if the class has no pawns, left and right otherwise.
struct EndingKings {
    static constexpr u16 none = 0xFFFF;

    u16 number[64][64];             // none for kings that touch
    const SquareMap* onto[64][64];  // the symmetry that makes of these kings the pair of that number
    std::vector<std::array<u8, 2>> squares;
    std::vector<const SquareMap*>
        mirror;  // the symmetry that leaves both kings in place; null if there is none

    explicit EndingKings(int symmetries);
};

// The state of a position: 0 while nothing is known, which in the end means a draw; n up to 126 a win in n
// moves; stateFirstLoss + n a loss in n moves, 0 being mated. While a class is being solved a win may still
// turn out to be faster; a loss is final.
using EndingState = u8;
constexpr EndingState stateUnknown = 0;
constexpr EndingState stateFirstLoss = 128;
constexpr EndingState stateDoubtful = 254;  // while solving: perhaps lost by now
constexpr EndingState stateIllegal = 255;
constexpr int maxDistance = 125;

constexpr bool isWin(EndingState state) {
    return state > stateUnknown && state < stateFirstLoss;
}
constexpr bool isLoss(EndingState state) {
    return state >= stateFirstLoss && state < stateDoubtful;
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

// The byte of a table that stands for the state, and back.
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
    // The kings must be apart.
    u32 indexOf(const Placement& p) const {
        return indexOf(kings.number[p.kings[0]][p.kings[1]], *kings.onto[p.kings[0]][p.kings[1]], p.men);
    }
    Placement placementOf(u32 index) const;

    EndingState stateOf(int sideToMove, const Placement& p) const {
        if (kings.number[p.kings[0]][p.kings[1]] == EndingKings::none) return stateIllegal;
        return states[sideToMove][indexOf(p)];
    }

    // Marks the positions of a pair of kings that cannot be: men on one square, pawns on the first or last
    // rank, the king of the side not to move attacked. The others become unknown.
    void markIllegal(int sideToMove, u32 pair);

    int tbClass;
    EndingMaterial material;
    const EndingKings& kings;
    std::vector<EndingState> states[2];  // by side to move
};

// All men with the kings.
u64 occupiedSquares(const EndingMaterial& material, const Placement& p);

// Does a man of `side`, its king left out, attack the square?
bool attacks(const EndingMaterial& material, const Placement& p, int side, int square, u64 occupied);

}  // namespace valku
