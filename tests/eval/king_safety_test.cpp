#include <cstdlib>
#include <limits>

#include "eval_test.h"

namespace valku {
namespace {

// The share of the attack tables in a value: the value less the one with a table of zeros.
i32 attackShare(const std::string& fen) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    const i32 with = valueOf(fen);
    i32 without;
    {
        const ValueScope none(kingSafety, 0);
        updateKingAttackTable();
        without = valueOf(fen);
    }
    updateKingAttackTable();
    return with - without;
}

TEST(KingAttackTable, FollowsTheSetting) {
    EXPECT_EQ(kingAttackTable[20], 309);
    EXPECT_EQ(kingAttackTable[39], 1174);
    {
        const ValueScope twice(kingSafety, 200);
        updateKingAttackTable();
        EXPECT_EQ(kingAttackTable[20] / 2, 309);
    }
    for (const i32 setting : {std::numeric_limits<i32>::min(), std::numeric_limits<i32>::max()}) {
        const ValueScope extreme(kingSafety, setting);
        updateKingAttackTable();
        EXPECT_EQ(kingAttackTable[0], 0);
        for (int count = 1; count < kingAttackTableSize; ++count) {
            EXPECT_EQ(kingAttackTable[count] > 0, setting > 0) << count;
            EXPECT_LE(std::abs(kingAttackTable[count]), 10'000'000) << count;
        }
    }
    updateKingAttackTable();
}

// White's king is the target. A black queen on a6, b8 or the like is too far off to count, but saves the 3
// points that its absence takes; White has none, so that Black's king is safe. Points are in brackets, costs
// from the table.
TEST(KingAttack, PointsOfThePieces) {
    const struct {
        const char* fen;
        i32 cost;
    } cases[] = {
        {"qk6/8/8/8/5n2/8/8/6K1", 17},      // knight three ranks and a file off (4)
        {"1k6/8/8/8/5n2/8/8/6K1", 2},       // the same without a queen (4 - 3)
        {"1k6/8/8/8/8/8/5r2/1K6", 0},       // without a queen nothing is left (0 - 3)
        {"qk6/1b6/8/8/8/8/8/6K1", 55},      // bishop b7 to f3, g2 and h1 (2 + 3 + 3)
        {"qk6/8/b7/8/8/8/8/6K1", 11},       // a6 reaches f1 alone: d3 and e2 are not beside the king (3)
        {"qk6/8/2b5/8/8/8/8/5K2", 24},      // c6 to f3 and g2; h1 is past the king's surroundings (2 + 3)
        {"6kq/8/5b2/8/8/8/8/2K5", 24},      // the same to the west (2 + 3)
        {"1k6/1b6/8/8/4q3/8/8/6K1", 280},   // the queen on e4 (5) makes it 4 + 5 + 5
        {"qk6/1b6/8/8/8/8/8/6KN", 33},      // the knight on h1 defends (8 - 2)
        {"qk6/1b6/8/8/8/5N2/8/6K1", 17},    // the free one on f3 weakens and defends (2 + 2 + 2 - 2)
        {"qk6/1b6/8/3n4/8/8/8/6K1", 24},    // an own man on the way weakens it to 2 (1 + 2 + 2)
        {"qk4r1/8/8/8/8/8/8/6K1", 33},      // rook on an open file (6)
        {"qk3rr1/8/8/8/8/8/8/6K1", 116},    // two of them (6 + 6)
        {"qk3rr1/8/8/8/8/8/8/5BK1", 68},    // a bishop on the file, and a defender (5 + 6 - 2)
        {"qk3rr1/8/8/8/8/8/8/4B1K1", 98},   // a defender farther off (12 - 1)
        {"qk4r1/8/8/8/8/6P1/7P/6K1", 11},   // g3 held by h2 (6 - 2 - 1)
        {"qk4r1/8/8/8/6N1/8/6P1/6K1", 11},  // pawn and knight on the file, a defender (6 - 1 - 1 - 1)
        {"qk4r1/8/8/8/6p1/8/7P/6K1", 6},    // the own pawn on g4 can open the file (2)
        {"1k6/8/8/8/6q1/8/8/6K1", 24},      // queen three squares off (8 - 3)
        {"1k6/8/8/8/6q1/5p2/8/6K1", 55},    // with a pawn on f3 before the king (8 - 3 + 3)
    };
    for (const auto& c : cases) EXPECT_EQ(attackShare(c.fen), -c.cost) << c.fen;
    // The table is not left, however many pieces attack a king.
    EXPECT_LT(attackShare("1k6/8/8/8/3b1q2/5nb1/6n1/4rrK1"), -300);
}

TEST(KingShelter, WingAndCentre) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    // f2, g2 and h2 shelter a king on g1 in full; on b1 it is bare: 4 * 13. In the center f2 gives 3. Both b1
    // and g1 are worth 15, d1 and e1 nothing.
    checkPairs({{"4k3/8/8/8/8/8/5PPP/6K1", "4k3/8/8/8/8/8/5PPP/1K6", 52},
                {"4k3/8/8/8/8/8/5PPP/4K3", "4k3/8/8/8/8/8/5PPP/1K6", 12 - 15},
                {"4k3/8/8/8/8/8/5PPP/3K4", "4k3/8/8/8/8/8/5PPP/1K6", 12 - 15}});
    // The endgame has no shelter.
    const ValueScope endgame(endgameMaterial, alwaysEndgame);
    checkPairs({{"3qk3/8/8/8/8/8/P4PPP/3Q2K1", "3qk3/8/8/8/8/8/P4PPP/1K1Q4", 0}});
}

// Black's pawn on g4, held by h5, meets h3: a storm of 2. Which weight it gets depends on the kings and
// the chains.
TEST(KingShelter, StormCountsMoreOnOppositeWings) {
    const ValueScope middlegame(endgameMaterial, alwaysMiddlegame);
    const struct {
        const char* fen;
        i32 value1, value2;
    } cases[] = {
        {"6k1/8/8/7p/6p1/7P/8/6K1", -14, 0},
        {"3k4/8/8/7p/6p1/7P/8/6K1", -14, 0},
        {"2k5/8/8/7p/6p1/7P/8/6K1", 0, -24},
        {"6k1/8/8/7p/6p1/7P/8/4K3", -14, 0},  // e1 meets the kingside storm,
        {"6k1/8/8/7p/6p1/7P/8/3K4", 0, 0},    // d1 the queenside one
        {"6k1/8/8/p7/1p6/P7/8/3K4", 0, -24},
        // A locked center with White's chain to the queenside: Black's points at the king on g1.
        {"6k1/8/3p4/3Pp2p/4P1p1/7P/8/6K1", 0, -24},
        {"6k1/8/4p3/3pP2p/3P2p1/7P/8/6K1", -14, 0},
    };
    for (const auto& c : cases) {
        checkShares({{&pawnStormValue1, c.fen, c.value1}, {&pawnStormValue2, c.fen, c.value2}});
    }
}

}  // namespace
}  // namespace valku
