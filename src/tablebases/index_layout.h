#pragma once

#include <vector>

#include "chess/types.h"
#include "tablebases/combinations.h"
#include "tablebases/king_tables.h"
#include "tablebases/material_classes.h"

// How the index of a position is put together, worked out once for each class and side to move.
//
// An index is a number in a mixed radix. Its head is `base` of the king pair plus the slot group: men that
// stand in the slots of the other king (king_tables.h), so that contact checks take up no numbers. Then come
// the rest, men that take any square still free. All men of one type and side are one digit.

namespace valku {

constexpr int mostDigits = 3;  // types of men that a side has besides its king
constexpr u64 pawnSquares = 48;
constexpr u8 firstPawnSquare = 8;

struct IndexDigit {
    u8 side;
    u8 place;  // of the first man in TbMen
    u8 count;
    bool pawns;
    SlotType slotType;  // in the slot group
    u64 radix;          // among the rest; that of the slot group depends on the kings (groupRadix)
};

struct IndexDigits {
    IndexDigit digits[mostDigits];
    u8 count = 0;

    void add(const IndexDigit& digit) { digits[count++] = digit; }
    const IndexDigit* begin() const { return digits; }
    const IndexDigit* end() const { return digits + count; }
    IndexDigit* begin() { return digits; }
    IndexDigit* end() { return digits + count; }
};

// By king pair: arrangements of the slot group with all pairs before it. One more entry holds the sum of all.
using BaseSums = std::vector<u32>;

struct IndexLayout {
    u8 mover;        // the side to move
    bool pawns;      // the class has some, on either side
    u8 boardMirror;  // applied to all squares
    u8 groupMirror;  // applied to the kings and the slot group once more
    const KingPairs* pairs;
    const BaseSums* base;
    IndexDigits group, rest;

    // Indices below `range` stand for positions without a right to capture en passant. In classes with pawns
    // on both sides a tail for the others follows, which nothing here reads; its end is `limit`. No legal
    // position uses the last entries of the tail: they begin at `usedTailEnd`. Without a tail all three are
    // the same.
    u64 range, usedTailEnd, limit;
};

// Builds the class table, the king tables and all layouts once; further calls do nothing. Any thread may read
// them afterwards.
void initIndexLayouts();

const IndexLayout& indexLayout(int tbClass, int side);

// Arrangements of a digit of the slot group. The kings are as the group sees them.
inline u32 groupRadix(const IndexDigit& digit, KingSquares kings) {
    const bool kingInWay = slot[digit.slotType][kings.other][kings.own] != noSlot;
    return choose[static_cast<u32>(slotCount[digit.slotType][kings.other] - kingInWay)][digit.count];
}

// Takes the lowest digit off.
inline u32 takeDigit(u64& number, u64 radix) {
    const u64 digit = number % radix;
    number /= radix;
    return static_cast<u32>(digit);
}

// Calls put(digit, which of its men, square) for all men of the slot group whose arrangement has that number,
// counted from `base`. The squares are as the group sees them.
template <class Put>
void forEachOfGroup(const IndexDigits& group, KingSquares kings, u64 number, Put put) {
    u32 groupDigits[mostDigits];
    for (int i = group.count - 1; i >= 0; --i)
        groupDigits[i] = takeDigit(number, groupRadix(group.digits[i], kings));
    u8 numbers[tbPlacesOfType];
    const u32* digitNumber = groupDigits;
    for (const IndexDigit& digit : group) {
        combinationOfNumber(*digitNumber++, numbers, digit.count);
        for (u8 i = 0; i < digit.count; ++i) {
            const bool afterKing = numbers[i] >= slot[digit.slotType][kings.other][kings.own];
            put(digit, i, squareOfSlot[digit.slotType][kings.other][numbers[i] + afterKing]);
        }
    }
}

}  // namespace valku
