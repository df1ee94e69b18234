#pragma once

#include "chess/side.h"

// Everything in the evaluation that depends on the pawns alone.

namespace valku {

enum ChainWing : u8 { noChainWing = 0, chainToQueenside = 1, chainToKingside = 2 };

// The facts about one placement of the pawns. An entry is a cache line, so that a probe costs one cache miss.
struct alignas(64) PawnEntry {
    u64 key;                // pawnHash
    u8 used;                // 0 in a cleared table; the key of a board without pawns is 0
    u8 centralPawnsAtHome;  // 1 if a rear pawn stands on d2, e2, d7 or e7

    // Structure scores from White's view, hundredths of a pawn, for middlegame and endgame.
    i16 middlegameScore;
    i16 endgameScore;

    // Per file the rearmost pawn. The value for a file without one counts as ahead of everything: noSquare
    // for White, 0 for Black.
    u8 whiteRear[8], blackRear[8];

    // Passed pawns from the fourth relative rank on.
    u8 whitePassers[8], blackPassers[8];
    u8 whitePasserCount, blackPasserCount;

    // Pawns on dark squares in the low nibble, on light ones in the high; blocked central pawns count twice.
    u8 whitePawnColours, blackPawnColours;

    // A ChainWing each: the wing that the side's pawn chain points at if the center is locked.
    u8 whiteChainWing, blackChainWing;

    u8 pawnSpread;  // files between the outermost pawns

    // Pawn storms: how close the pawns are to opening files against a king on that wing.
    i8 whiteStormKingside, whiteStormQueenside;
    i8 blackStormKingside, blackStormQueenside;

    // Pawn shelters of the own king, for each place of the king.
    i8 whiteShelterKingside, whiteShelterQueenside, whiteShelterCentre;
    i8 blackShelterKingside, blackShelterQueenside, blackShelterCentre;
};

// Computes the entry for the pawns of searchPosition.
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

// True if the relative rank of `square` is higher than that of `other`. The rear value of a file without
// pawns is ahead of every square for its own side, and ahead of none for the enemy.
template <Color Us>
constexpr bool isAhead(int square, int other) {
    return Us == White ? rankOf(square) > rankOf(other) : rankOf(square) < rankOf(other);
}

}  // namespace valku
