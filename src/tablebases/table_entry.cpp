#include "tablebases/table_entry.h"

#include "chess/attacks.h"
#include "chess/side.h"
#include "tablebases/index_layout.h"
#include "tablebases/material_classes.h"
#include "tablebases/position_index.h"

namespace valku {

namespace {

void placeMen(Position& position, const TbClass& tbClass, int side, const TbMen& men) {
    constexpr u8 codes[tbTypes] = {WhitePawn, WhiteKnight, WhiteBishop, WhiteRook, WhiteQueen};
    const auto place = [&](u8 code, u8 square) {
        placeMan(position, side == 0 ? code : otherColor(code), makeSquare(file64(square), rank64(square)));
    };
    for (std::size_t type = 0; type < tbTypes; ++type) {
        for (u8 i = 0; i < tbClass.men[side][type]; ++i) place(codes[type], men[type * 3 + i]);
    }
    place(WhiteKing, men[tbKingPlace]);
}

constexpr u8 squareOf64(int square) {
    return static_cast<u8>((square + fileOf(square)) >> 1);
}

template <Color Us>
TbMen menListOf(const Position& position) {
    TbMen men{};
    std::size_t place = 0;
    const auto add = [&](const u8* squares) {
        for (std::size_t i = 0; i < 3 && squares[i] != noSquare; ++i) men[place + i] = squareOf64(squares[i]);
        place += 3;
    };
    add(pawnsOf<Us>(position));
    add(knightsOf<Us>(position));
    add(bishopsOf<Us>(position));
    add(rooksOf<Us>(position));
    add(queensOf<Us>(position));
    men[tbKingPlace] = squareOf64(kingOf<Us>(position));
    return men;
}

MaterialCounts countsOf(const Position& p) {
    return {p.whitePawnCount, p.whiteKnightCount, p.whiteBishopCount, p.whiteRookCount, p.whiteQueenCount,
            p.blackPawnCount, p.blackKnightCount, p.blackBishopCount, p.blackRookCount, p.blackQueenCount};
}

}  // namespace

bool entryOfPosition(const Position& position, TbEntry& entry) {
    const int found = classOfMaterial(countsOf(position));
    if (found == 0) return false;
    const bool inverted = found < 0;
    entry.tbClass = inverted ? -found : found;
    entry.side = (position.sideToMove == White) == inverted ? 1 : 0;
    const TbMen white = menListOf<White>(position);
    const TbMen black = menListOf<Black>(position);
    entry.index = inverted ? tableIndex(entry.tbClass, entry.side, black, white, true)
                           : tableIndex(entry.tbClass, entry.side, white, black, false);
    return true;
}

bool positionOfEntry(const TbEntry& entry, Position& position) {
    TbMen first, second;
    if (!squaresOfIndex(entry.tbClass, entry.side, entry.index, first, second)) return false;
    const TbClass& tbClass = classTable[entry.tbClass];
    clearPosition(position);
    placeMen(position, tbClass, 0, first);
    placeMen(position, tbClass, 1, second);
    position.sideToMove = entry.side == 0 ? White : Black;
    computeDerived(position);
    return !leftKingInCheck(position);
}

u64 tableLength(int tbClass, int side) {
    u64 length = indexLayout(tbClass, side).usedTailEnd;
    if (length > indexLayout(tbClass, side).range) return length;
    Position position;
    while (length > 0 && !positionOfEntry({tbClass, side, length - 1}, position)) --length;
    return length;
}

}  // namespace valku
