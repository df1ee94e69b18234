#pragma once

#include "chess/side.h"

// Everything that depends on the pawns alone.

namespace valku {

enum ChainWing : u8 { noChainWing = 0, chainToQueenside = 1, chainToKingside = 2 };

// What is known of one placement of the pawns. An entry is a cache line: a probe costs one miss.
struct alignas(64) PawnEntry {
    u64 key;                // pawnHash
    u8 used;                // 0 in a cleared table; the key of a board without pawns is 0
    u8 centralPawnsAtHome;  // 1 if a rear pawn stands on d2, e2, d7 or e7

    // Structure scores from White's view, for the two branches of the evaluation.
    i16 middlegameScore;
    i16 endgameScore;

    // Per file the rearmost pawn. A file without one has a value that counts as ahead of everything: 127 for
    // White, 0 for Black.
    u8 whiteRear[8], blackRear[8];

    // Passed pawns, from the fourth rank on as their side sees it.
    u8 whitePassers[8], blackPassers[8];
    u8 whitePasserCount, blackPasserCount;

    // Pawns on dark squares in the low nibble, on light ones in the high; blocked central pawns count double.
    u8 whitePawnColours, blackPawnColours;

    // A ChainWing each: where the side's chain points to if the centre is locked.
    u8 whiteChainWing, blackChainWing;

    u8 pawnSpread;  // files between the outermost pawns

    // How far the pawns have come to open files against a king on that wing.
    i8 whiteStormKingside, whiteStormQueenside;
    i8 blackStormKingside, blackStormQueenside;

    // What the pawns are worth as a shelter of the own king.
    i8 whiteShelterKingside, whiteShelterQueenside, whiteShelterCentre;
    i8 blackShelterKingside, blackShelterQueenside, blackShelterCentre;
};

// Fills the entry for the pawns of searchPosition.
void buildPawnEntry(PawnEntry& entry);

// clang-format off
#define VALKU_PAWN_FIELD(accessor, whiteField, blackField)                      \
    template <Color Us, class AnyEntry>                                         \
    [[gnu::always_inline]] inline auto& accessor(AnyEntry& entry) {             \
        if constexpr (Us == White) return entry.whiteField;                     \
        else return entry.blackField;                                           \
    }

VALKU_PAWN_FIELD(rearOf, whiteRear, blackRear)
VALKU_PAWN_FIELD(passersOf, whitePassers, blackPassers)
VALKU_PAWN_FIELD(passerCountOf, whitePasserCount, blackPasserCount)
VALKU_PAWN_FIELD(pawnColoursOf, whitePawnColours, blackPawnColours)
VALKU_PAWN_FIELD(chainWingOf, whiteChainWing, blackChainWing)
VALKU_PAWN_FIELD(stormKingsideOf, whiteStormKingside, blackStormKingside)
VALKU_PAWN_FIELD(stormQueensideOf, whiteStormQueenside, blackStormQueenside)
VALKU_PAWN_FIELD(shelterKingsideOf, whiteShelterKingside, blackShelterKingside)
VALKU_PAWN_FIELD(shelterQueensideOf, whiteShelterQueenside, blackShelterQueenside)
VALKU_PAWN_FIELD(shelterCentreOf, whiteShelterCentre, blackShelterCentre)

#undef VALKU_PAWN_FIELD
// clang-format on

// Does `square` lie on a higher rank than `other`, as Us counts the ranks? With a rear pawn: the value of a
// file without pawns is ahead of every square for its own side, and ahead of none for the enemy.
template <Color Us>
constexpr bool isAhead(int square, int other) {
    return Us == White ? rankOf(square) > rankOf(other) : rankOf(square) < rankOf(other);
}

}  // namespace valku
