#include "eval_test.h"

namespace valku {
namespace {

TEST(Evaluate, StartPositionIsTheRightToMoveAndTheMobility) {
    checkValues(
        {{startPositionFen, 25, 17}, {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1", 9, 17}});
}

// Only the middlegame gives points for castling rights, eight each, which shows the branch. The border is the
// material on the board and 500 for each queen.
TEST(Evaluate, MaterialPicksTheBranch) {
    const auto check = [](i32 border, const std::string& fen, i32 rights) {
        const ValueScope guard(endgameMaterial, border);
        EXPECT_EQ(valueOf(fen), 8 + 8 * rights) << fen;
    };
    const i32 withoutQueens = 2 * (800 + 740 + 762 + 1160), withQueens = withoutQueens + 2 * 1160 + 1000;
    const std::string placement = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w ";
    check(withQueens, placement + "KQ - 0 1", 0);
    check(withQueens - 1, placement + "KQ - 0 1", 2);
    check(withQueens - 1, placement + "Qkq - 0 1", -1);
    check(withoutQueens, "rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR w K - 0 1", 0);
    check(withoutQueens - 1, "rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR w K - 0 1", 1);
}

// Full boards, where terms meet; every value is compared with the mirrored one.
TEST(Evaluate, MirroredPositionsHaveOppositeValues) {
    for (const char* fen : {
             "2kr3r/ppp2pp1/2n1b2p/2b1P3/5P2/P1N1q1P1/1PQ1P1BP/R1B2RK1 w - - 3 14",
             "r1bq1rk1/ppp1npbp/3p2p1/3Pp2n/1PP1P3/2N2N2/P3BPPP/R1BQR1K1 b - - 2 10",
             "8/5pk1/4p1p1/1p1pP2p/1P1P3P/r4PP1/4RK2/8 w - - 0 1",
             "6k1/1R6/p4b2/1p6/3P4/1P4P1/r4PK1/2B5 b - - 0 33",
             "q3n1k1/1p1Pbp1p/p5p1/P3P3/1P2bN2/4R2P/1B3PP1/3Q2K1 w - - 0 25",
             "8/3P3k/2P4p/8/1p4r1/p7/1R4K1/8 w - - 0 50",
         }) {
        valueOf(fen, 23);
    }
}

// The third man of a kind is material and nothing else. Lists are filled from a8, so it stands on the first
// rank.
TEST(Evaluate, ThirdManOfAKindIsMaterialOnly) {
    checkPairs({
        {"rnbqkbnr/pppppppp/8/8/R1B5/8/PPPPPPPP/RNB1K1NR", "rnbqkbnr/pppppppp/8/8/R1B5/8/PPPPPPPP/RNB1K1N1",
         580},
        {"rnbqkbnr/pppppppp/8/8/N6N/8/PPPPPPPP/4K1N1", "rnbqkbnr/pppppppp/8/8/N6N/8/PPPPPPPP/4K3", 370},
        {"rnbqkbnr/pppppppp/8/8/B6B/8/PPPPPPPP/2B1K3", "rnbqkbnr/pppppppp/8/8/B6B/8/PPPPPPPP/4K3", 381},
    });
}

TEST(Evaluate, WeightsOfTheFrame) {
    {
        const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
        // A man of either color before a pawn on its home square.
        checkShares({{&blockedCentralPawn, "4k3/3pp3/3n4/8/8/3bN3/3PP3/4K3", -40 + 20},
                     {&blockedCentralPawn, "4k3/8/8/8/8/2N2N2/2P2P2/4K3", 0},
                     {&rookAgainstNoRook, "4k3/pp4pp/8/8/8/8/PP4PP/R3K3", 0}});
    }
    const ValueScope endgame(endgameMaterial, alwaysEndgame);
    // Too much material on the board for the drawish cases, pawns on both wings, no pure endings.
    checkShares({{&twoKnightsMalus, "1nbqk3/pp4pp/8/8/8/8/PP4PP/1N1QK1N1", -6},
                 {&twoKnightsMalus, "1nbqk1n1/pp4pp/8/8/8/8/PP4PP/1N1QK1NN", 0},
                 {&rookAgainstNoRook, "1nb1kbn1/pp4pp/8/8/8/8/PP4PP/R1B1KB1R", 20},
                 {&rookAgainstNoRook, "1nbqkbn1/pp4pp/8/8/8/8/PP4PP/R1B1KB1R", 0},
                 {&rookAgainstNoRook, "r1b1kb2/pp4pp/8/8/8/8/PP4PP/R1B1KB1R", 0}});
}

// Whole endgame values, summed by hand: material, the move 8, the piece's square and color, and the spread
// of the pawns.
TEST(Evaluate, BishopsLikeWidePawnsAndKnightsDoNot) {
    checkValues({{"3qk3/p6p/8/8/8/8/P6P/3QKB2", 381 + 8 - 14 + 2 * (3 - 1) + 2 * (7 - 5)},
                 {"3qk3/p6p/8/8/8/8/P6P/3QKN2", 370 + 8 - 2 * (7 - 5)},
                 {"3qk3/p3p3/8/8/8/8/P3P3/3QKN2", 370 + 8 + 2 * (5 - 4)}});
}

// A change of the piece values reaches everything that is derived from them.
TEST(Evaluate, DerivedMaterialFollowsThePieceValues) {
    EXPECT_EQ(drawishMaterial, 2901);
    {
        const ValueScope knight(knightValue, 390), queen(queenValue, 1000);
        updateDerivedMaterial();
        EXPECT_EQ(minorValue, 390);
        EXPECT_EQ(drawishMaterial, 390 + 2 * 1100);
        EXPECT_EQ(pieceValueByCode[BlackKnight], 390);
    }
    updateDerivedMaterial();
}

}  // namespace
}  // namespace valku
