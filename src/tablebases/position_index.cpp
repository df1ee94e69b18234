#include "tablebases/position_index.h"

#include <algorithm>
#include <bit>

#include "tablebases/index_layout.h"

namespace valku {

namespace {

// The squares of the men that have been counted so far.
struct Placed {
    u64 men = 0;
    u64 pawns = 0;

    void add(u8 square, bool pawn = false) {
        men |= bitOf(square);
        if (pawn) pawns |= bitOf(square);
    }
    // Pawns skip the squares of other pawns only.
    u64 taken(const IndexDigit& digit) const { return digit.pawns ? pawns : men; }
};

// The reflections that bring the king of the side to move to the part of the board that is numbered.
class Fold {
  public:
    Fold(const IndexLayout& layout, u8 ownKing, u8 otherKing, bool inverted) {
        if (layout.pawns) {
            mirror = static_cast<u8>(foldFile(ownKing) ^ (inverted ? mirrorRanks : 0) ^ layout.boardMirror);
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

}  // namespace

u64 tableIndex(int tbClass, int side, const TbMen& first, const TbMen& second, bool inverted) {
    const IndexLayout& layout = indexLayout(tbClass, side);
    const TbMen* const men[2] = {&first, &second};
    const u8 ownKing = (*men[layout.mover])[tbKingPlace];
    const u8 otherKing = (*men[1 - layout.mover])[tbKingPlace];
    const Fold fold(layout, ownKing, otherKing, inverted);
    Placed placed;
    placed.add(fold(ownKing));
    placed.add(fold(otherKing));
    const KingSquares kings{static_cast<u8>(fold(ownKing) ^ layout.groupMirror),
                            static_cast<u8>(fold(otherKing) ^ layout.groupMirror)};
    const u16 pair = layout.pairs->number[kings.own][kings.other];
    if (pair == noKingPair) return noIndex;

    u64 index = 0;
    u8 numbers[tbPlacesOfType];
    for (const IndexDigit& digit : layout.group) {
        const u8* const slots = slot[digit.slotType][kings.other];
        for (u8 i = 0; i < digit.count; ++i) {
            const u8 square = fold((*men[digit.side])[digit.place + i]);
            const u8 number = slots[square ^ layout.groupMirror];
            if (number == noSlot) return noIndex;
            numbers[i] = static_cast<u8>(number - (number > slots[kings.own]));
            placed.add(square, digit.pawns);
        }
        index = index * groupRadix(digit, kings) + combinationNumber(numbers, digit.count);
    }
    index += (*layout.base)[pair];

    for (const IndexDigit& digit : layout.rest) {
        const u64 taken = placed.taken(digit);
        const u8 lowest = digit.pawns ? firstPawnSquare : 0;
        for (u8 i = 0; i < digit.count; ++i) {
            const u8 square = fold((*men[digit.side])[digit.place + i]);
            if (square < lowest || square >= tbSquares - lowest) return noIndex;
            numbers[i] = static_cast<u8>(square - lowest - std::popcount(taken & (bitOf(square) - 1)));
            placed.add(square, digit.pawns);
        }
        index = index * digit.radix + combinationNumber(numbers, digit.count);
    }
    return index;
}

bool squaresOfIndex(int tbClass, int side, u64 index, TbMen& first, TbMen& second) {
    const IndexLayout& layout = indexLayout(tbClass, side);
    if (index >= layout.range) return false;

    // The last digit comes off first, but which squares are taken is known only from the digits before it.
    u32 restDigits[mostDigits];
    for (int i = layout.rest.count - 1; i >= 0; --i)
        restDigits[i] = takeDigit(index, layout.rest.digits[i].radix);
    const auto pair = std::ranges::upper_bound(*layout.base, index) - layout.base->begin() - 1;
    const KingSquares kings = layout.pairs->squares[static_cast<u32>(pair)];
    index -= (*layout.base)[static_cast<u32>(pair)];

    Placed placed;
    TbMen* const men[2] = {&first, &second};
    first = second = {};
    const auto put = [&](int manSide, int place, int square, bool pawn = false) {
        placed.add(static_cast<u8>(square), pawn);
        (*men[manSide])[static_cast<u32>(place)] = static_cast<u8>(square ^ layout.boardMirror);
    };
    put(layout.mover, tbKingPlace, kings.own ^ layout.groupMirror);
    put(1 - layout.mover, tbKingPlace, kings.other ^ layout.groupMirror);
    forEachOfGroup(layout.group, kings, index, [&](const IndexDigit& digit, u8 i, u8 square) {
        put(digit.side, digit.place + i, square ^ layout.groupMirror, digit.pawns);
    });
    u8 numbers[tbPlacesOfType];
    const u32* number = restDigits;
    for (const IndexDigit& digit : layout.rest) {
        combinationOfNumber(*number++, numbers, digit.count);
        const u64 taken = placed.taken(digit);
        for (u8 i = 0; i < digit.count; ++i) {
            int square = numbers[i] + (digit.pawns ? firstPawnSquare : 0);
            for (u64 left = taken; left != 0 && std::countr_zero(left) <= square; left &= left - 1) ++square;
            put(digit.side, digit.place + i, square, digit.pawns);
        }
    }
    return std::popcount(placed.men) == classTable[tbClass].menCount();
}

}  // namespace valku
