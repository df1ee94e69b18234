#include "tablebases/index_layout.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>

namespace valku {

namespace {

IndexLayout layouts[tbClassCount][2];

void addDigit(IndexDigits& digits, const TbClass& tbClass, int side, int type, SlotType slotType) {
    const u8 count = tbClass.men[side][type];
    if (count == 0) return;
    digits.add({.side = static_cast<u8>(side),
                .place = static_cast<u8>(type * tbPlacesOfType),
                .count = count,
                .pawns = type == tbPawn,
                .slotType = slotType,
                .radix = 0});
}

// The digits in the order of the class's name. Where the side to move has a lone king, the pawns of the other
// side are the slot group; else they come first among the rest.
void layOutDigits(const TbClass& tbClass, IndexLayout& layout) {
    constexpr SlotType slotTypeOf[tbTypes] = {movingPawn, knightSlot, bishopSlot, rookSlot, queenSlot};
    const int other = 1 - layout.mover;
    for (int type = tbQueen; type >= tbPawn; --type)
        addDigit(layout.group, tbClass, layout.mover, type, slotTypeOf[type]);
    addDigit(layout.group.count == 0 ? layout.group : layout.rest, tbClass, other, tbPawn, plainPawn);
    for (int type = tbQueen; type > tbPawn; --type)
        addDigit(layout.rest, tbClass, other, type, slotTypeOf[type]);
}

// Many layouts share a slot group: its sums are kept by the king pairs and the men.
const BaseSums& baseSumsOf(const KingPairs& pairs, const IndexDigits& group) {
    static std::map<std::pair<const KingPairs*, std::vector<u8>>, BaseSums> known;
    std::vector<u8> men;
    for (const IndexDigit& digit : group) men.insert(men.end(), {digit.slotType, digit.count});
    BaseSums& sums = known[{&pairs, men}];
    if (!sums.empty()) return sums;
    sums.push_back(0);
    for (const KingSquares& kings : pairs.squares) {
        u32 arrangements = 1;
        for (const IndexDigit& digit : group) arrangements *= groupRadix(digit, kings);
        sums.push_back(sums.back() + arrangements);
    }
    return sums;
}

// Gives the digits of the rest their radices. Returns the arrangements of the rest.
u64 measureRest(IndexLayout& layout) {
    u64 men = 2;
    u64 pawns = 0;
    u64 arrangements = 1;
    const auto place = [&](const IndexDigit& digit) {
        men += digit.count;
        if (digit.pawns) pawns += digit.count;
    };
    for (const IndexDigit& digit : layout.group) place(digit);
    for (IndexDigit& digit : layout.rest) {
        digit.radix = choose[digit.pawns ? pawnSquares - pawns : tbSquares - men][digit.count];
        arrangements *= digit.radix;
        place(digit);
    }
    return arrangements;
}

// Does one of the rooks and queens check the other king along its rank from the left?
bool checksToTheRight(u64 rooksAndQueens, u64 men, u8 otherKing) {
    const u64 menToTheLeft = men & (bitOf(otherKing) - 1);
    return menToTheLeft != 0 && (rooksAndQueens & std::bit_floor(menToTheLeft)) != 0;
}

// How many arrangements of the moving pieces, at the end of those with the last king pair (d8 and h8), no
// legal position has: two pieces are on one square, or a rook or queen gives check on the last rank. A piece
// of the other side on g8 can block that check.
u64 uselessAtEnd(const KingPairs& pairs, const IndexDigits& pieces, bool checkCanBeBlocked) {
    const BaseSums& base = baseSumsOf(pairs, pieces);
    const KingSquares kings = pairs.squares.back();
    const u64 arrangements = base.back() - base[base.size() - 2];
    const auto isUseless = [&](u64 number) {
        u64 men = bitOf(kings.own) | bitOf(kings.other);
        u64 rooksAndQueens = 0;
        bool apart = true;
        forEachOfGroup(pieces, kings, number, [&](const IndexDigit& digit, u8, u8 square) {
            apart = apart && !(men & bitOf(square));
            men |= bitOf(square);
            if (digit.slotType == rookSlot || digit.slotType == queenSlot) rooksAndQueens |= bitOf(square);
        });
        return !apart || (!checkCanBeBlocked && checksToTheRight(rooksAndQueens, men, kings.other));
    };
    u64 useless = 0;
    while (useless < arrangements && isUseless(arrangements - 1 - useless)) ++useless;
    return useless;
}

// Sets limit and usedTailEnd. An en passant capture is one of 14: seven pairs of adjacent files, with either
// pawn of the pair capturing. The other pawns stand on the 44 pawn squares that these two and the two empty
// squares behind the captured pawn leave.
void measureTail(const TbClass& tbClass, IndexLayout& layout) {
    layout.limit = layout.usedTailEnd = layout.range;
    const int mover = layout.mover;
    if (!tbClass.hasPawnsOnBothSides()) return;
    constexpr u64 captures = 14;
    constexpr u64 freePawnSquares = 44;

    IndexDigits movingPieces;
    u64 men = 4;  // the kings, and the empty squares
    for (const IndexDigit& digit : layout.group) {
        if (!digit.pawns) movingPieces.add(digit);
        men += digit.count;
    }
    const u64 ownPawns = tbClass.men[mover][tbPawn] - 1u;
    const u64 otherPawns = tbClass.men[1 - mover][tbPawn] - 1u;
    u64 others = choose[freePawnSquares - ownPawns][otherPawns];
    bool otherSideHasPieces = false;
    for (const IndexDigit& digit : layout.rest) {
        if (!digit.pawns) {
            others *= choose[tbSquares - men][digit.count];
            otherSideHasPieces = true;
        }
        men += digit.count;
    }
    const u64 ofArrangement = captures * choose[freePawnSquares][ownPawns] * others;
    layout.limit += baseSumsOf(*layout.pairs, movingPieces).back() * ofArrangement;
    layout.usedTailEnd =
        layout.limit - uselessAtEnd(*layout.pairs, movingPieces, otherSideHasPieces) * ofArrangement;
    // The last numbers have the kings on d8 and h8, the pawns on g5 and h5, and h6 and h7 empty. The last
    // square for a further pawn is g7, where it would give check.
    if (ownPawns != 0) layout.usedTailEnd -= choose[freePawnSquares - 1][ownPawns - 1] * others;
}

IndexLayout makeLayout(const TbClass& tbClass, int side) {
    IndexLayout layout{};
    layout.mover = static_cast<u8>(side);
    layout.pawns = tbClass.hasPawns();
    layout.pairs = layout.pawns ? &kingPairPawn : &kingPairPawnless;
    layOutDigits(tbClass, layout);
    // The one table of a symmetric class is numbered as if the first side were to move. In other classes a
    // slot group with pawns is seen with the side to move going up.
    const bool pawnsInGroup = std::ranges::any_of(layout.group, &IndexDigit::pawns);
    if (side == 1 && layout.pawns && tbClass.has(tbSymmetric)) {
        layout.boardMirror = mirrorRanks;
    } else if (side == 1 && pawnsInGroup) {
        layout.groupMirror = mirrorRanks;
    }
    layout.base = &baseSumsOf(*layout.pairs, layout.group);
    layout.range = layout.base->back() * measureRest(layout);
    measureTail(tbClass, layout);
    return layout;
}

void buildLayouts() {
    initMaterialClasses();
    initKingTables();
    for (const TbClass& tbClass : classTable) {
        for (const int side : {0, 1}) layouts[tbClass.id][side] = makeLayout(tbClass, side);
    }
}

}  // namespace

void initIndexLayouts() {
    [[maybe_unused]] static const bool built = (buildLayouts(), true);
}

const IndexLayout& indexLayout(int tbClass, int side) {
    return layouts[tbClass][side];
}

}  // namespace valku
