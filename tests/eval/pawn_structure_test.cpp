#include <utility>
#include <vector>

#include "eval_test.h"

namespace valku {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

// White's kingside, queenside and center, then Black's.
std::vector<int> sheltersOf(const char* fen) {
    const PawnEntry& entry = pawnEntryOf(fen);
    return {entry.whiteShelterKingside, entry.whiteShelterQueenside, entry.whiteShelterCentre,
            entry.blackShelterKingside, entry.blackShelterQueenside, entry.blackShelterCentre};
}

// -13, 4 + 5 + 4 for unmoved pawns of a wing, 3 for each of c2, d2, e2 and f2 in the center; every step of a
// pawn loses.
TEST(PawnStructure, Shelter) {
    EXPECT_THAT(sheltersOf("4k3/8/8/8/8/8/8/4K3"), Each(-13));
    EXPECT_THAT(sheltersOf(startPositionFen), ElementsAre(0, 0, -1, 0, 0, -1));
    EXPECT_THAT(sheltersOf("4k3/1pp5/p7/8/5P2/6P1/7P/4K3"),
                ElementsAre(-13 + 2 + 3 + 4, -13, -13 + 2, -13, -13 + 4 + 5 + 3, -13 + 3));
}

// Scores that were summed by hand, term by term; mirrored positions have the opposite ones.
TEST(PawnStructure, ScoresOfSmallStructures) {
    const struct {
        const char* fen;
        int middlegame, endgame;
    } cases[] = {
        // files 10/-6, doubled -12, isolated twice -36, passed e3 +15, two weaknesses -8
        {"4k3/8/8/8/8/4P3/4P3/4K3", -31, -47},
        {"4k3/8/8/8/P7/8/8/4K3", -32, -16},   // file -10/6, isolated -18, weakness -4
        {"4k3/8/8/P7/8/8/8/4K3", -10, 6},     // beyond the fourth rank there is no isolation
        {"4k3/8/4p3/4P3/8/8/8/4K3", 26, 26},  // space 15 - 5, e6 isolated on a closed file +12, weak +4
        // files 10/-6, space 25 - 10, d3 backward -18, c5 isolated +12; weaknesses d4, c4, d3, e4 less d5,
        // f5, c5: -4
        {"4k3/8/8/2p5/2P1P3/3P4/8/4K3", 15, -1},
        // files 10/-6, space 15, passed e3 +15; weaknesses d4, e3 less c5, e5: 0
        {"4k3/8/8/8/3P4/4P3/8/4K3", 40, 24},
        {"4k3/8/8/7P/6P1/8/8/4K3", -15, 9},  // files -15/9, weaknesses g4 less f5: 0
        {"4k3/8/P7/8/1P6/8/8/4K3", -19, 5},  // files -15/9, gap beside a6 -4, weaknesses b4 less c5: 0
        {"4k3/8/8/8/PP6/8/8/4K3", 7, 31},    // files -15/9, phalanx 9 + 9, weakness c5 +4
    };
    for (const auto& c : cases) {
        for (const int sign : {1, -1}) {
            const PawnEntry& entry = pawnEntryOf(c.fen, sign < 0);
            EXPECT_EQ(entry.middlegameScore, sign * c.middlegame) << c.fen << " " << sign;
            EXPECT_EQ(entry.endgameScore, sign * c.endgame) << c.fen << " " << sign;
        }
    }
}

TEST(PawnStructure, PassedPawnsFromTheFourthRankOnAreListed) {
    const struct {
        const char* fen;
        std::vector<int> white, black;
    } cases[] = {
        {"4k3/8/8/8/8/P7/8/4K3", {}, {}},
        {"4k3/8/8/7p/P7/8/8/4K3", {A4}, {H5}},
        {"4k3/8/4P3/4P3/8/8/8/4K3", {E6}, {}},        // the rear pawn of two is none
        {"4k3/4p3/8/8/3P4/8/8/4K3", {}, {}},          // a guard on the next file
        {"4k3/8/8/3PpP2/8/8/8/4K3", {D5, F5}, {E5}},  // level pawns have passed each other
        {"4k3/8/8/1p1P4/1P1p4/8/8/4K3", {D5}, {D4}},  // head to head, and past each other
        {"4k3/3p4/8/1P6/8/8/8/4K3", {B5}, {}},        // two files away
    };
    for (const auto& c : cases) {
        const PawnEntry& e = pawnEntryOf(c.fen);
        EXPECT_THAT(std::vector<int>(e.whitePassers, e.whitePassers + e.whitePasserCount),
                    UnorderedElementsAreArray(c.white))
            << c.fen;
        EXPECT_THAT(std::vector<int>(e.blackPassers, e.blackPassers + e.blackPasserCount),
                    UnorderedElementsAreArray(c.black))
            << c.fen;
    }
}

TEST(PawnStructure, StormCountsPawnsThatCanOpenAFile) {
    // h6 attacks the guarded g5 at once.
    EXPECT_EQ(pawnEntryOf("6k1/8/7p/6P1/7P/8/8/6K1").whiteStormKingside, 2);
    // g6 stops g5, but h4 comes to h5 in one step and needs no guard there.
    EXPECT_EQ(pawnEntryOf("6k1/8/6p1/6P1/7P/8/8/6K1").whiteStormKingside, 1);
    // Without h4 the pawn on g5 is not guarded.
    EXPECT_EQ(pawnEntryOf("6k1/8/7p/6P1/8/8/8/6K1").whiteStormKingside, 0);
    // Pawns below the fourth rank and of the center storm nothing.
    EXPECT_EQ(pawnEntryOf("6k1/8/8/8/4p1p1/3P1P1P/6P1/6K1").whiteStormKingside, 0);
}

TEST(PawnStructure, BlockedCentralPawnsCountTwiceOnTheirColor) {
    // d4 is dark, d5 light; c3 is dark and never counts twice.
    const PawnEntry& blocked = pawnEntryOf("4k3/8/8/3p4/3P4/2P5/8/4K3");
    EXPECT_EQ(blocked.whitePawnColours, 0x03);
    EXPECT_EQ(blocked.blackPawnColours, 0x20);
    // e6 attacks the square before d4. e6 itself is light and stands outside the center's eight squares.
    const PawnEntry& held = pawnEntryOf("4k3/8/4p3/8/3P4/8/8/4K3");
    EXPECT_EQ(held.whitePawnColours, 0x02);
    EXPECT_EQ(held.blackPawnColours, 0x10);
    EXPECT_EQ(pawnEntryOf("4k3/3p4/8/8/3P4/8/8/4K3").whitePawnColours, 0x01);
}

TEST(PawnTable, EntriesLiveUntilTheTableIsCleared) {
    const i32 before = pawnEntryOf("4k3/8/8/8/8/4P3/4P3/4K3").middlegameScore;
    const ValueScope dearer(doublePawn, doublePawn + 100);
    EXPECT_EQ(probePawnTable()->middlegameScore, before);
    clearPawnTable();
    EXPECT_EQ(probePawnTable()->middlegameScore, before - 100);
}

// In a small table the placements take each other's entry, and each must come out right again.
TEST(PawnTable, SizesFromOneEntryOn) {
    for (const u64 size : {u64{1}, u64{2}, nPawnTables}) {
        nPawnTables = size;
        createPawnTable();
        EXPECT_EQ(nPawnTables, size);
        for (int round = 0; round < 2; ++round) {
            for (const auto& [fen, score] : {std::pair{"4k3/8/8/8/8/4P3/4P3/4K3 w - - 0 1", -31},
                                             std::pair{"4k3/8/8/8/8/P7/8/4K3 w - - 0 1", -17}}) {
                ASSERT_TRUE(readFen(fen));
                copyPosition(searchPosition, gamePosition);
                EXPECT_EQ(probePawnTable()->middlegameScore, score) << fen << " in " << size;
            }
        }
    }
}

}  // namespace
}  // namespace valku
