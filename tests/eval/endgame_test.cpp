#include "eval_test.h"

namespace valku {
namespace {

TEST(Endgame, DrawnMaterial) {
    // A little mobility to stand ahead also where a pawn is against.
    checkValues({
        {"8/8/3k4/8/8/2NK4/8/8", 0, 30},      // a knight
        {"8/8/3k4/8/p7/2NK4/8/8", 0, 30},     // a knight against a pawn
        {"8/8/3k4/8/8/1NNK4/8/8", 0, 30},     // two knights
        {"8/p4b2/3k4/8/8/3K4/8/7R", 0, 30},   // rook against bishop and pawn
        {"8/6r1/3k4/8/8/3KB3/8/7R", 0, 30},   // rook and bishop against rook
        {"8/p5r1/3k4/8/8/3KN3/8/7R", 0, 30},  // rook and knight against rook and pawn
        // The fork that a lone knight gives is added after the draw.
        {"8/8/3k4/8/8/8/2n5/R3K3", 0 - (580 - 370) / 2, -800},
    });
    for (const char* won : {"8/8/3k4/8/8/3K4/8/7R", "8/6r1/3k4/8/8/3KB3/P7/7R"}) {
        EXPECT_GT(valueOf(won), 100) << won;
    }
    EXPECT_GT(valueOf("8/6n1/3k4/8/8/3K4/8/7R"), 0);
}

// Two knights against one: White's rules end with the division, Black's go on and find two knights drawn.
// Material 370, move 8, two knights -6, knights and a spread of 0 files 10; the squares cancel. 382 less 40
// for pawns on few files is 342, an eighth of it 42.
TEST(Endgame, TwoKnightsAgainstOneDependOnTheColor) {
    const char* fen = "8/8/2nk4/8/8/2NKN3/8/8";
    EXPECT_EQ(oneSidedValueOf(fen), 42);
    EXPECT_EQ(oneSidedValueOf(fen, 0, true), 0);
}

TEST(Endgame, RookPawnsWithTheKingInTheCorner) {
    for (const char* drawn : {"k7/8/P7/8/3B4/8/8/2K5", "k7/8/P7/P7/P2B4/8/8/2K5", "k7/8/P7/8/8/8/8/2K5",
                              "7k/8/7P/8/4B3/8/8/2K5", "8/2k5/8/1K6/P7/8/8/8"}) {
        EXPECT_EQ(valueOf(drawn), 10) << drawn;
    }
    for (const char* won : {"k7/8/P7/8/2B5/8/8/2K5",            // the bishop covers a8,
                            "7k/8/7P/8/3B4/8/8/2K5 b - - 0 1",  // or h8
                            "k7/8/KP6/8/3B4/8/8/8",             // not on the rook file
                            "8/3k4/8/1K6/P7/8/8/8",             // the kings are equally near
                            "8/8/PK6/8/3k4/8/8/8"}) {           // too late
        EXPECT_GT(valueOf(won), 100) << won;
    }
}

// Symmetrical positions, so that the score is the move 8 and the mobility: what is left of it shows the
// scaling.
TEST(Endgame, ScalingByTheKindOfMaterial) {
    checkValues({
        {"r3k2r/pp4pp/8/8/8/8/PP4PP/R3K2R", 0, 2},  // four rooks take 16, at most to 0
        {"r3k2r/pp4pp/8/8/8/8/PP4PP/R3K2R", 12, 20},
        {"4k2r/pp4pp/8/8/8/8/PP4PP/4K2R", 20, 20},      // two rooks take 8
        {"3qk3/pp4pp/8/8/8/8/PP4PP/3QK3", 12, 20},      // queens take 16
        {"3qk2r/pp4pp/8/8/8/8/PP4PP/3QK2R", 28, 20},    // mixed pieces take nothing
        {"4k3/pp4pp/8/8/8/8/PP4PP/4K3", 130, 92},       // pawn endings gain three tenths,
        {"4k3/pp4pp/8/8/8/8/PP4PP/4K3", 350, 292},      // at most 50
        {"4k3/pppp4/8/8/8/8/PPPP4/4K3", 98, 92},        // three files of spread: 130 less a quarter,
        {"4k3/pppp4/8/8/8/8/PPPP4/4K3", 310, 292},      // at most 40
        {"2b1k3/pp4pp/8/8/8/8/PP4PP/2B1K3", 51, 93},    // opposite bishops halve,
        {"2b1k3/pp4pp/8/8/8/8/PP4PP/2B1K3", 250, 392},  // at most 150
    });
}

// A side without pawns and a lead of a minor piece at most keeps an eighth, unless much is on the board: then
// 80 of mobility count in full.
TEST(Endgame, SmallLeadsWithoutPawnsKeepAnEighth) {
    const auto slope = [](const char* fen) { return valueOf(fen, 480) - valueOf(fen, 400); };
    EXPECT_EQ(slope("3qk3/p6p/8/8/8/8/8/3QKN2"), 10);    // 2890 on the board
    EXPECT_EQ(slope("3qk3/8/8/8/8/8/8/3QKB2"), 10);      // a lead of just a bishop
    EXPECT_EQ(slope("3qk3/p2p3p/8/8/8/8/8/3QKN2"), 80);  // 2990
    EXPECT_EQ(slope("3qk3/8/8/8/8/8/7P/3QKN2"), 80);     // with a pawn
    EXPECT_EQ(slope("4k2n/8/8/8/8/8/8/3QK3"), 80);       // a lead of more
}

// Who is ahead is read from the score, not from the material: with the play against it White's knight is no
// draw, and Black's rules are asked. They go on after the eighth, and find a bare king's win drawn if White's
// king is in time for both corners.
TEST(Endgame, TheSignOfTheScorePicksTheSide) {
    EXPECT_EQ(oneSidedValueOf("8/8/3k4/8/8/2NK4/8/8", -1000), -10);
    const char* far = "8/8/3K4/8/8/2N5/3k4/8";
    EXPECT_EQ(oneSidedValueOf(far, -1080) - oneSidedValueOf(far, -1000), -10);
}

}  // namespace
}  // namespace valku
