#include "eval_test.h"

namespace valku {
namespace {

// In the middlegame every weight counts in full.
TEST(Rooks, FilesRanksAndMenBehind) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    checkShares({
        {&rookOnOpenLine, "k7/8/8/8/8/8/8/2K1RR2", 32},
        {&rookOnOpenLine, "k7/4p3/8/8/8/8/8/2K1R3", 0},
        {&rookOn7th, "6k1/2RR4/8/8/8/8/8/2K5", 48},
        {&rookOn7th, "3R2k1/8/8/8/8/8/8/2K5 b - - 0 1", 0},
        {&rookOn7th, "8/3R4/6k1/8/8/8/8/2K5 b - - 0 1", 0},
        {&doubledRooks, "6k1/8/8/8/8/3R4/8/2K1R3", 0},
        {&doubledRooks, "6k1/R7/R7/8/8/8/8/R1K5", 10},
        {&narrowedRook, "7k/p7/8/8/8/R7/P7/7K", -10},
        {&narrowedRook, "7k/p7/8/8/8/R1n5/P7/7K", -30},
        {&narrowedRook, "7k/p7/8/8/8/R7/8/N6K", -10},
        {&narrowedRook, "7k/p7/8/8/8/R7/R7/7K", 0},    // an own rook is no hindrance
        {&narrowedRook, "7k/p7/8/8/8/8/R7/N6K", -10},  // on the second rank only one square is behind
        {&narrowedRook, "7k/8/8/8/8/R7/P7/7K", 0},     // no enemy pawn in front
        {&narrowedRook, "7k/7p/8/8/8/5N1R/7P/7K", -30},
        {&narrowedRook, "7k/7p/8/8/8/4N2R/7P/7K", -10},
    });
}

TEST(Rooks, ShutInByTheOwnKing) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    for (const char* shut : {"7k/8/8/8/8/8/7P/6KR", "7k/8/8/8/8/7P/8/5K1R", "7k/8/8/8/8/6P1/8/5KR1",
                             "7k/8/8/8/8/7P/6PR/6K1", "7k/8/8/8/8/7P/5P1R/6K1", "7k/8/8/8/8/6P1/5PR1/6K1",
                             "7k/8/8/8/8/8/P7/R1K5", "7k/8/8/8/8/P7/1P6/RK6", "7k/8/8/8/8/1P6/8/1RK5",
                             "7k/8/8/8/8/P7/R1P5/1K6", "7k/8/8/8/8/1P6/1RP5/2K5"}) {
        checkShares({{&trappedRook, shut, -45}});
    }
    // In the one before the last the rook on g2 is free and decides; the one on h1 does not count.
    for (const char* free : {"7k/8/8/8/7P/8/8/5K1R", "7k/8/8/8/8/8/7P/4K2R", "7k/8/8/8/8/7P/7R/6K1",
                             "7k/8/8/8/8/8/6RP/5K1R", "7k/8/8/8/8/8/P6P/R2K3R"}) {
        checkShares({{&trappedRook, free, 0}});
    }
    // In Chess960 a king on f1 may still castle with a rook on g1, which then is not trapped; h1 is
    // tested next.
    chess960 = true;
    checkShares({{&trappedRook, "7k/8/8/8/8/8/6P1/5KR1 w G - 0 1", 0},
                 {&trappedRook, "7k/8/8/8/8/8/6PP/5KRR w G - 0 1", -45},
                 {&trappedRook, "7k/8/8/8/8/8/1P6/1RK5 w B - 0 1", 0}});
    chess960 = false;
}

TEST(Bishops, WeightsOfBishops) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    checkShares({
        {&trappedBishop, "3k4/B6B/1p4p1/8/8/8/8/6K1", -240},
        {&pairOfBishops, "6k1/8/8/8/8/8/8/B1B3K1", 35},  // of one color
        {&pairOfBishops, "2b3k1/8/8/8/8/8/8/2B3K1", 0},
        {&badBishop, "6k1/8/8/8/8/8/3P4/2B3K1", -20},  // the wing closes the other side
        {&badBishop, "6k1/8/8/8/5P2/8/8/2B3K1", 0},
        {&badBishop, "6k1/8/8/8/8/8/3p4/2B3K1", 0},  // only own pawns close
        {&badBishop, "6k1/8/8/8/6P1/3P4/4B3/6K1", -20},
        {&badBishop, "6k1/8/8/8/8/3P4/4B3/6K1", 0},
        {&badBishop, "6k1/8/8/3P4/2B5/8/8/6K1", 0},  // from the fourth rank on the wing is open
        {&badBishop, "4k2B/8/8/8/8/8/8/4K3", -20},   // beyond the board all is closed
    });
}

TEST(Outposts, FullOnlyWhereNobodyCanAttack) {
    const ValueScope endgame(endgameMaterial, alwaysEndgame);
    // White's knight on e5, held by d4, cannot be attacked by pawns. A bishop that stands on its file parity
    // halves it: a8 has e5's, b8 has not. The rest of the difference is the bishop's own: 7 on a8, 14 on b8.
    // Two pawns that hold it make it full again.
    checkPairs({
        {"1b1q2k1/p6p/8/4N3/3P4/8/P6P/3QK3", "b2q2k1/p6p/8/4N3/3P4/8/P6P/3QK3", (17 - 8) + (14 - 7)},
        {"1b1q2k1/p6p/8/4N3/3P1P2/8/P6P/3QK3", "b2q2k1/p6p/8/4N3/3P1P2/8/P6P/3QK3", 14 - 7},
    });
    // Without the structure score only the outpost differs. Black has no minor piece; f7 can attack.
    const i32 attackable = valueWithoutStructure("q5k1/p4p2/8/4N3/3P4/8/P6P/3QK3");
    EXPECT_EQ(valueWithoutStructure("q5k1/p5p1/8/4N3/3P4/8/P6P/3QK3") - attackable, 17);
    // A pawn level with the knight is past it. It is a passed pawn then, worth 43 * 40 / 128 to Black.
    EXPECT_EQ(valueWithoutStructure("q5k1/p7/8/4Np2/3P4/8/P6P/3QK3") - attackable, 17 - 13);
    // An own pawn beside the front square stands in for a safe file; it costs a pawn and is no passer, being
    // stopped by f7.
    EXPECT_EQ(valueWithoutStructure("q5k1/p4p2/5P2/4N3/3P4/8/P6P/3QK3") - attackable, 17 + 100);
    // The knight is not guarded: no outpost, whatever the files.
    EXPECT_EQ(valueWithoutStructure("q5k1/p4p2/8/4N3/8/8/P2P3P/3QK3"),
              valueWithoutStructure("q5k1/p5p1/8/4N3/8/8/P2P3P/3QK3"));
}

TEST(Pieces, SecondThreatsAndRooksBehindEnemyPawns) {
    const ValueScope endgame(endgameMaterial, alwaysEndgame);
    checkPairs({
        // The second threat counts half. The pawn c5 attacks queen and rook; on d3 the queen is not attacked
        // and has no other term.
        {"q5k1/p6p/8/2p5/1R1Q4/8/P6P/4K3", "q5k1/p6p/8/2p5/1R6/3Q4/P6P/4K3", -(580 - 100) / 2},
        // Bishop and queen: an odd stake is rounded towards zero.
        {"q5k1/p6p/8/2p5/1B1Q4/8/P6P/4K3", "q5k1/p6p/8/2p5/1B6/3Q4/P6P/4K3", -140},
        // A knight forks king and rook. Without the check one threat is left; the king is worth 10 less on
        // f1.
        {"q6k/p6p/8/8/8/8/P1n4P/R2QK3", "q6k/p6p/8/8/8/8/P1n4P/R2Q1K2", -(580 - 370) / 2 + 10},
        // A rook behind an enemy pawn is worth 8: no king is near, and closed files give nothing.
        {"7R/8/k7/7p/8/6P1/q7/3QK3", "6R1/8/k7/7p/8/6P1/q7/3QK3", 8},
    });
}

}  // namespace
}  // namespace valku
