#pragma once

#include "chess/position.h"

// What White and Black call the same thing, so that a rule can be written once, as a template on the color.

namespace valku {

// Constants of a color. `up` is a pawn's step; relative ranks count from the own side, 0 to 7.
template <Color Us>
struct Side {
    static constexpr Color Them = ~Us;
    static constexpr int up = Us == White ? 16 : -16;
    static constexpr u8 flag = Us == White ? whiteFlag : blackFlag;
    // The flag that empty squares and enemy men share: our men may go there.
    static constexpr u8 enemyOrEmpty = Us == White ? blackFlag : whiteFlag;

    static constexpr u8 pawn = Us == White ? WhitePawn : BlackPawn;
    static constexpr u8 knight = Us == White ? WhiteKnight : BlackKnight;
    static constexpr u8 bishop = Us == White ? WhiteBishop : BlackBishop;
    static constexpr u8 rook = Us == White ? WhiteRook : BlackRook;
    static constexpr u8 queen = Us == White ? WhiteQueen : BlackQueen;
    static constexpr u8 king = Us == White ? WhiteKing : BlackKing;

    static constexpr int longRight = Us == White ? whiteLong : blackLong;
    static constexpr int shortRight = Us == White ? whiteShort : blackShort;

    // White's square as this color sees it: mirrored for Black.
    static constexpr int square(int whiteSquare) {
        return Us == White ? whiteSquare : mirrorRank(whiteSquare);
    }
    static constexpr int relativeRank(int square) {
        return Us == White ? rankOf(square) : 7 - rankOf(square);
    }
};

// clang-format off
#define VALKU_SIDE_FIELD(accessor, whiteField, blackField)                      \
    template <Color Us, class AnyPosition>                                      \
    [[gnu::always_inline]] inline auto& accessor(AnyPosition& position) {       \
        if constexpr (Us == White) return position.whiteField;                  \
        else return position.blackField;                                        \
    }

VALKU_SIDE_FIELD(pawnsOf, whitePawns, blackPawns)
VALKU_SIDE_FIELD(knightsOf, whiteKnights, blackKnights)
VALKU_SIDE_FIELD(bishopsOf, whiteBishops, blackBishops)
VALKU_SIDE_FIELD(rooksOf, whiteRooks, blackRooks)
VALKU_SIDE_FIELD(queensOf, whiteQueens, blackQueens)
VALKU_SIDE_FIELD(pawnCountOf, whitePawnCount, blackPawnCount)
VALKU_SIDE_FIELD(knightCountOf, whiteKnightCount, blackKnightCount)
VALKU_SIDE_FIELD(bishopCountOf, whiteBishopCount, blackBishopCount)
VALKU_SIDE_FIELD(rookCountOf, whiteRookCount, blackRookCount)
VALKU_SIDE_FIELD(queenCountOf, whiteQueenCount, blackQueenCount)
VALKU_SIDE_FIELD(knightsBBOf, whiteKnightsBB, blackKnightsBB)
VALKU_SIDE_FIELD(diagonalBBOf, whiteDiagonalBB, blackDiagonalBB)
VALKU_SIDE_FIELD(straightBBOf, whiteStraightBB, blackStraightBB)
VALKU_SIDE_FIELD(kingOf, whiteKing, blackKing)
VALKU_SIDE_FIELD(materialOf, whiteMaterial, blackMaterial)
VALKU_SIDE_FIELD(menOf, whiteMen, blackMen)
VALKU_SIDE_FIELD(pawnsOnFileOf, whitePawnsOnFile, blackPawnsOnFile)
VALKU_SIDE_FIELD(pawnAttacksOf, whitePawnAttacks, blackPawnAttacks)

#undef VALKU_SIDE_FIELD
// clang-format on

}  // namespace valku
