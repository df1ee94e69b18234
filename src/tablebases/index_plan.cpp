#include "tablebases/index_plan.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>
#include <vector>

#include "tablebases/index_tables.h"
#include "tablebases/table_classes.h"

namespace valku {

namespace {

constexpr int mostDigits = 3;  // types of men that a side has beside its king
constexpr u64 pawnSquares = 48;
constexpr u8 firstPawnSquare = 8;

// The men of one type: one digit of the number.
struct Digit {
    u8 side;
    u8 place;  // of the first of them in TbMen
    u8 count;
    bool pawns;
    SlotType slotType;  // read in the slot group only
    u64 radix;          // read outside of it only: there it does not depend on the kings
};

struct Digits {
    Digit digits[mostDigits];
    u8 count = 0;

    void add(const Digit& digit) { digits[count++] = digit; }
    const Digit* begin() const { return digits; }
    const Digit* end() const { return digits + count; }
    Digit* begin() { return digits; }
    Digit* end() { return digits + count; }
};

// By the pair of kings: arrangements of the slot group with all pairs before it. The sum of all is the last.
using BaseSums = std::vector<u32>;

// A number is made of the pair of kings with the slot group, men that stand in the slots of the other king,
// and the rest, men that take any square that is left.
struct IndexPlan {
    u8 mover;      // the side to move
    bool pawns;    // the class has some, on either side
    u8 boardTurn;  // turns the board for everything
    u8 groupTurn;  // and again for the kings' pair and the slot group
    const KingPairs* pairs;
    const BaseSums* base;
    Digits group, rest;
    u64 range, usedTailEnd, limit;  // as in the header
};

IndexPlan plans[tbClassCount][2];

// Men without order on squares numbered from 0.
u32 numberOfCombination(u8* numbers, int count) {
    if (count == 1) return numbers[0];
    if (numbers[0] > numbers[1]) std::swap(numbers[0], numbers[1]);
    if (count == 2) return choose[numbers[1]][2] + numbers[0];
    if (numbers[1] > numbers[2]) std::swap(numbers[1], numbers[2]);
    if (numbers[0] > numbers[1]) std::swap(numbers[0], numbers[1]);
    return choose[numbers[2]][3] + choose[numbers[1]][2] + numbers[0];
}

void combinationOfNumber(u32 number, u8* numbers, u8 count) {
    for (u8 k = count; k > 0; --k) {
        u8& largest = numbers[k - 1];
        for (largest = static_cast<u8>(k - 1); choose[largest + 1u][k] <= number; ++largest) continue;
        number -= choose[largest][k];
    }
}

u32 takeDigit(u64& number, u64 radix) {
    const u64 digit = number % radix;
    number /= radix;
    return static_cast<u32>(digit);
}

constexpr u64 bitOf(u8 square) {
    return u64{1} << square;
}

// What stands on the board so far.
struct Placed {
    u64 men = 0;
    u64 pawns = 0;

    void add(u8 square, bool pawn = false) {
        men |= bitOf(square);
        if (pawn) pawns |= bitOf(square);
    }
    // Only pawns are in the way when pawns are counted.
    u64 before(const Digit& digit) const { return digit.pawns ? pawns : men; }
};

// Arrangements of a digit of the slot group. The kings are as the group sees them.
u32 groupRadix(const Digit& digit, KingSquares kings) {
    const bool kingInWay = slot[digit.slotType][kings.other][kings.own] != noSlot;
    return choose[static_cast<u32>(slotCount[digit.slotType][kings.other] - kingInWay)][digit.count];
}

// The board, seen so that the king of the side to move stands in the part of it that is numbered.
class Fold {
  public:
    Fold(const IndexPlan& plan, u8 ownKing, u8 otherKing, bool inverted) {
        if (plan.pawns) {
            mirror = static_cast<u8>(foldFile(ownKing) ^ (inverted ? turnBoard : 0) ^ plan.boardTurn);
        } else {
            mirror = foldBoth(ownKing);
            transposed = !isFoldedPawnless(ownKing ^ mirror, otherKing ^ mirror);
        }
    }

    u8 operator()(u8 square) const {
        square ^= mirror;
        return transposed ? transposeSquare(square) : square;
    }

  private:
    u8 mirror;
    bool transposed = false;
};

void addDigit(Digits& digits, const TbClass& tbClass, int side, int type, SlotType slotType) {
    const u8 count = tbClass.men[side][type];
    if (count == 0) return;
    digits.add({.side = static_cast<u8>(side),
                .place = static_cast<u8>(type * tbPlacesOfType),
                .count = count,
                .pawns = type == tbPawn,
                .slotType = slotType,
                .radix = 0});
}

// The digits of a plan, in the order of the name. The pawns of the side not to move are the slot group of a
// lone king; else they come first among the rest.
void layOutDigits(const TbClass& tbClass, IndexPlan& plan) {
    constexpr SlotType slotTypeOf[tbTypes] = {movingPawn, knightSlot, bishopSlot, rookSlot, queenSlot};
    const int other = 1 - plan.mover;
    for (int type = tbQueen; type >= tbPawn; --type)
        addDigit(plan.group, tbClass, plan.mover, type, slotTypeOf[type]);
    addDigit(plan.group.count == 0 ? plan.group : plan.rest, tbClass, other, tbPawn, plainPawn);
    for (int type = tbQueen; type > tbPawn; --type)
        addDigit(plan.rest, tbClass, other, type, slotTypeOf[type]);
}

// Many plans share a slot group: its sums are kept by the pairs of kings and the men.
const BaseSums& baseSumsOf(const KingPairs& pairs, const Digits& group) {
    static std::map<std::pair<const KingPairs*, std::vector<u8>>, BaseSums> known;
    std::vector<u8> men;
    for (const Digit& digit : group) men.insert(men.end(), {digit.slotType, digit.count});
    BaseSums& sums = known[{&pairs, men}];
    if (!sums.empty()) return sums;
    sums.push_back(0);
    for (const KingSquares& kings : pairs.squares) {
        u32 arrangements = 1;
        for (const Digit& digit : group) arrangements *= groupRadix(digit, kings);
        sums.push_back(sums.back() + arrangements);
    }
    return sums;
}

// Gives the digits of the rest their radices. Returns the arrangements of the rest.
u64 measureRest(IndexPlan& plan) {
    u64 men = 2;
    u64 pawns = 0;
    u64 arrangements = 1;
    const auto place = [&](const Digit& digit) {
        men += digit.count;
        if (digit.pawns) pawns += digit.count;
    };
    for (const Digit& digit : plan.group) place(digit);
    for (Digit& digit : plan.rest) {
        digit.radix = choose[digit.pawns ? pawnSquares - pawns : tbSquares - men][digit.count];
        arrangements *= digit.radix;
        place(digit);
    }
    return arrangements;
}

// Calls put(digit, which of its men, square) for all men of a slot group. The squares are as the group sees
// them.
template <class Put>
void forEachOfGroup(const Digits& group, KingSquares kings, u64 number, Put put) {
    u32 groupDigits[mostDigits];
    for (int i = group.count - 1; i >= 0; --i)
        groupDigits[i] = takeDigit(number, groupRadix(group.digits[i], kings));
    u8 numbers[tbPlacesOfType];
    const u32* digitNumber = groupDigits;
    for (const Digit& digit : group) {
        combinationOfNumber(*digitNumber++, numbers, digit.count);
        for (u8 i = 0; i < digit.count; ++i) {
            const bool afterKing = numbers[i] >= slot[digit.slotType][kings.other][kings.own];
            put(digit, i, squareOfSlot[digit.slotType][kings.other][numbers[i] + afterKing]);
        }
    }
}

// Does one of the pieces check the other king, which stands to the right of them, along its rank?
bool checksToTheRight(u64 straightMovers, u64 men, u8 otherKing) {
    const u64 menToTheLeft = men & (bitOf(otherKing) - 1);
    return menToTheLeft != 0 && (straightMovers & std::bit_floor(menToTheLeft)) != 0;
}

// How many arrangements of the moving pieces, at the end of those with the last pair of kings, d8 and h8, no
// legal position has: two pieces are on one square, or a rook or queen gives check on the last rank. A piece
// of the other side may stand on g8 and ward the check off.
u64 uselessAtEnd(const KingPairs& pairs, const Digits& pieces, bool checkCanBeBlocked) {
    const BaseSums& base = baseSumsOf(pairs, pieces);
    const KingSquares kings = pairs.squares.back();
    const u64 arrangements = base.back() - base[base.size() - 2];
    const auto isUseless = [&](u64 number) {
        u64 men = bitOf(kings.own) | bitOf(kings.other);
        u64 straightMovers = 0;
        bool apart = true;
        forEachOfGroup(pieces, kings, number, [&](const Digit& digit, u8, u8 square) {
            apart = apart && !(men & bitOf(square));
            men |= bitOf(square);
            if (digit.slotType == rookSlot || digit.slotType == queenSlot) straightMovers |= bitOf(square);
        });
        return !apart || (!checkCanBeBlocked && checksToTheRight(straightMovers, men, kings.other));
    };
    u64 useless = 0;
    while (useless < arrangements && isUseless(arrangements - 1 - useless)) ++useless;
    return useless;
}

// A capture en passant: seven pairs of neighbouring files, either pawn of them the capturing one. The pawns
// that have no part in it stand on the pawn squares that these two and the two empty ones behind the captured
// pawn leave.
void measureTail(const TbClass& tbClass, IndexPlan& plan) {
    plan.limit = plan.usedTailEnd = plan.range;
    const int mover = plan.mover;
    if (!tbClass.hasPawns(0) || !tbClass.hasPawns(1)) return;
    constexpr u64 captures = 14;
    constexpr u64 freePawnSquares = 44;

    Digits movingPieces;
    u64 men = 4;  // the kings, and the empty squares
    for (const Digit& digit : plan.group) {
        if (!digit.pawns) movingPieces.add(digit);
        men += digit.count;
    }
    const u64 ownPawns = tbClass.men[mover][tbPawn] - 1u;
    const u64 otherPawns = tbClass.men[1 - mover][tbPawn] - 1u;
    u64 others = choose[freePawnSquares - ownPawns][otherPawns];
    bool otherSideHasPieces = false;
    for (const Digit& digit : plan.rest) {
        if (!digit.pawns) {
            others *= choose[tbSquares - men][digit.count];
            otherSideHasPieces = true;
        }
        men += digit.count;
    }
    const u64 ofArrangement = captures * choose[freePawnSquares][ownPawns] * others;
    plan.limit += baseSumsOf(*plan.pairs, movingPieces).back() * ofArrangement;
    plan.usedTailEnd =
        plan.limit - uselessAtEnd(*plan.pairs, movingPieces, otherSideHasPieces) * ofArrangement;
    // The last numbers have the kings on d8 and h8, the pawns on g5 and h5, and h6 and h7 empty. The last
    // square for a further pawn is g7, where it would give check.
    if (ownPawns != 0) plan.usedTailEnd -= choose[freePawnSquares - 1][ownPawns - 1] * others;
}

IndexPlan makePlan(const TbClass& tbClass, int side) {
    IndexPlan plan{};
    plan.mover = static_cast<u8>(side);
    plan.pawns = tbClass.hasPawns(0) || tbClass.hasPawns(1);
    plan.pairs = plan.pawns ? &kingPairPawn : &kingPairPawnless;
    layOutDigits(tbClass, plan);
    // One table of a symmetric class serves both sides, as if the first one were to move. Of others the slot
    // group is seen with the side to move going up, if there are pawns in it.
    const bool pawnsInGroup = std::ranges::any_of(plan.group, &Digit::pawns);
    if (side == 1 && plan.pawns && tbClass.has(tbSymmetric)) {
        plan.boardTurn = turnBoard;
    } else if (side == 1 && pawnsInGroup) {
        plan.groupTurn = turnBoard;
    }
    plan.base = &baseSumsOf(*plan.pairs, plan.group);
    plan.range = plan.base->back() * measureRest(plan);
    measureTail(tbClass, plan);
    return plan;
}

void buildPlans() {
    initTableClasses();
    initIndexTables();
    for (const TbClass& tbClass : classTable) {
        for (const int side : {0, 1}) plans[tbClass.id][side] = makePlan(tbClass, side);
    }
}

}  // namespace

void initIndexPlans() {
    [[maybe_unused]] static const bool built = (buildPlans(), true);
}

u64 tableIndex(int tbClass, int side, const TbMen& first, const TbMen& second, bool inverted) {
    const IndexPlan& plan = plans[tbClass][side];
    const TbMen* const men[2] = {&first, &second};
    const u8 ownKing = (*men[plan.mover])[tbKingPlace];
    const u8 otherKing = (*men[1 - plan.mover])[tbKingPlace];
    const Fold fold(plan, ownKing, otherKing, inverted);
    Placed placed;
    placed.add(fold(ownKing));
    placed.add(fold(otherKing));
    const KingSquares kings{static_cast<u8>(fold(ownKing) ^ plan.groupTurn),
                            static_cast<u8>(fold(otherKing) ^ plan.groupTurn)};
    const u16 pair = plan.pairs->number[kings.own][kings.other];
    if (pair == noKingPair) return noIndex;

    u64 index = 0;
    u8 numbers[tbPlacesOfType];
    for (const Digit& digit : plan.group) {
        const u8* const slots = slot[digit.slotType][kings.other];
        for (u8 i = 0; i < digit.count; ++i) {
            const u8 square = fold((*men[digit.side])[digit.place + i]);
            const u8 number = slots[square ^ plan.groupTurn];
            if (number == noSlot) return noIndex;
            numbers[i] = static_cast<u8>(number - (number > slots[kings.own]));
            placed.add(square, digit.pawns);
        }
        index = index * groupRadix(digit, kings) + numberOfCombination(numbers, digit.count);
    }
    index += (*plan.base)[pair];

    for (const Digit& digit : plan.rest) {
        const u64 before = placed.before(digit);
        const u8 lowest = digit.pawns ? firstPawnSquare : 0;
        for (u8 i = 0; i < digit.count; ++i) {
            const u8 square = fold((*men[digit.side])[digit.place + i]);
            if (square < lowest || square >= tbSquares - lowest) return noIndex;
            numbers[i] = static_cast<u8>(square - lowest - std::popcount(before & (bitOf(square) - 1)));
            placed.add(square, digit.pawns);
        }
        index = index * digit.radix + numberOfCombination(numbers, digit.count);
    }
    return index;
}

bool squaresOfIndex(int tbClass, int side, u64 index, TbMen& first, TbMen& second) {
    const IndexPlan& plan = plans[tbClass][side];
    if (index >= plan.range) return false;

    // The last digit comes off first, but the men in the way of one are known only from those before it.
    u32 restDigits[mostDigits];
    for (int i = plan.rest.count - 1; i >= 0; --i)
        restDigits[i] = takeDigit(index, plan.rest.digits[i].radix);
    const auto pair = std::ranges::upper_bound(*plan.base, index) - plan.base->begin() - 1;
    const KingSquares kings = plan.pairs->squares[static_cast<u32>(pair)];
    index -= (*plan.base)[static_cast<u32>(pair)];

    Placed placed;
    TbMen* const men[2] = {&first, &second};
    first = second = {};
    const auto put = [&](int manSide, int place, int square, bool pawn = false) {
        placed.add(static_cast<u8>(square), pawn);
        (*men[manSide])[static_cast<u32>(place)] = static_cast<u8>(square ^ plan.boardTurn);
    };
    put(plan.mover, tbKingPlace, kings.own ^ plan.groupTurn);
    put(1 - plan.mover, tbKingPlace, kings.other ^ plan.groupTurn);
    forEachOfGroup(plan.group, kings, index, [&](const Digit& digit, u8 i, u8 square) {
        put(digit.side, digit.place + i, square ^ plan.groupTurn, digit.pawns);
    });
    u8 numbers[tbPlacesOfType];
    const u32* number = restDigits;
    for (const Digit& digit : plan.rest) {
        combinationOfNumber(*number++, numbers, digit.count);
        const u64 before = placed.before(digit);
        for (u8 i = 0; i < digit.count; ++i) {
            int square = numbers[i] + (digit.pawns ? firstPawnSquare : 0);
            for (u64 left = before; left != 0 && std::countr_zero(left) <= square; left &= left - 1) ++square;
            put(digit.side, digit.place + i, square, digit.pawns);
        }
    }
    return std::popcount(placed.men) == classTable[tbClass].menCount();
}

u64 indexRange(int tbClass, int side) {
    return plans[tbClass][side].range;
}

u64 usedTailEnd(int tbClass, int side) {
    return plans[tbClass][side].usedTailEnd;
}

u64 indexLimit(int tbClass, int side) {
    return plans[tbClass][side].limit;
}

}  // namespace valku
