#include "eval_test.h"

namespace valku {
namespace {

// Values of pawn endings that were summed by hand in the order of the rules: material and move, passed pawn,
// structure and kings; then the race, the raise of pawn endings by 30 per cent (at most 50), and the cut by
// a quarter (at most 40) for pawns on few files.
TEST(PassedPawns, PawnEndingsByHand) {
    checkValues({
        // The king on e8 blocks e6: 43 * 110 / 128 = 36. 100 + 8 + 36 + 17 - 35 = 126; + 37; - 40.
        {"4k3/8/4P3/8/8/8/8/K7", 123},
        // Nothing stops a5. 100 + 8 + 70 + 6 + 15 = 199; + 500; + 50; - 40.
        {"7k/8/8/P7/8/8/8/6K1", 709},
        // The king on e8 takes 15 of 128. 100 + 8 + 61 + 6 - 20 = 155; + 500 as White is to move; + 50; - 40.
        {"4k3/8/8/P7/8/8/8/6K1", 665},
        // Black to move is in time, and first in the corner.
        {"4k3/8/8/P7/8/8/8/6K1 b - - 0 1", 10},
        // Three files to go in three moves: the king on f8 is in time. 100 + 8 + 48 + 15 - 10 = 161; + 48;
        // - 40.
        {"5k2/8/8/2P5/8/8/8/6K1", 169},
        // The own king is on the path and costs a move: four, with the king on e8 four files away. 100 + 8
        // + 53 + 83 + 6 - 20 = 230; + 50; - 40.
        {"4k3/K7/8/P7/8/8/8/8", 240},
        // Both sides run, White to move.
        {"7k/8/8/P7/7p/8/8/K7", 140},   // 3 moves to 4: 8 + 100 = 108; + 32
        {"7k/8/P7/8/7p/8/8/K7", 598},   // 2 to 4: 8 + 40 + 500 = 548; + 50
        {"7k/8/8/8/P6p/8/8/K7", -187},  // 4 to 4: 8 - 22 - 30 - 100 = -144; - 43
        {"7k/8/8/8/P7/7p/8/K7", -634},  // 4 to 3: 8 - 22 - 70 - 500 = -584; - 50
    });
}

// Endgames with queens and wide pawns, where nothing is scaled. The white pawns a2 and h2 are closed in by a7
// and h7.
TEST(PassedPawns, TermsByPairs) {
    const ValueScope endgame(endgameMaterial, alwaysEndgame);
    // A king on h8 takes nothing from d5: it is four files away (row 28, entry 31: 15 parts of 128).
    const i32 free = (128 - 15) * 70 / 128;
    checkPairs({
        // A rook behind the pawn gives 8 * 3. A second one adds only its doubling; on h3 it is narrowed by h2
        // (10) and has g3 and f3 free.
        {"q5k1/p6p/8/3P4/8/8/P3K2P/Q2R4", "q5k1/p6p/8/3P4/8/8/P3K2P/Q6R", 24},
        {"q5k1/p6p/8/3P4/8/3R4/P3K2P/Q2R4", "q5k1/p6p/8/3P4/8/7R/P3K2P/Q2R4", 10 + 10},
        // The king supports from behind, better from beside, and still better from ahead, though it takes 15
        // of the path. e4 and e5 are worth 7 more than f4 and f5.
        {"q5k1/p6p/8/3P4/4K3/8/P6P/Q7", "q5k1/p6p/8/3P4/5K2/8/P6P/Q7", 20 + 15 - 8},
        {"q5k1/p6p/8/3PK3/8/8/P6P/Q7", "q5k1/p6p/8/3P1K2/8/8/P6P/Q7", 41 + 15 - 8},
        {"q5k1/p6p/3K4/3P4/8/8/P6P/Q7", "q5k1/p6p/5K2/3P4/8/8/P6P/Q7", 62 + free - 70 + 8},
        // What stands on the path of d5 takes its part, an enemy queen 18, an own one 15.
        {"3q3k/p6p/8/3P4/8/8/P6P/1Q2K3", "2q4k/p6p/8/3P4/8/8/P6P/1Q2K3", (128 - 15 - 18) * 70 / 128 - free},
        {"3Qq2k/p6p/8/3P4/8/8/P6P/1Q2K3", "2Q1q2k/p6p/8/3P4/8/8/P6P/1Q2K3",
         (128 - 15 - 15) * 70 / 128 - free},
    });
    // Beside each other c5 and d5 gain 20 each; b5 is a file farther from the king than c5 and worth 67
    // to 61.
    EXPECT_EQ(valueWithoutStructure("q5k1/7p/8/2PP4/8/8/4K2P/Q7") -
                  valueWithoutStructure("q5k1/7p/8/1P1P4/8/8/4K2P/Q7"),
              20 + 20 + 61 - 67);
}

// Two passed pawns beside each other against a rook, White and Black to move. The king is three files from
// d6: in time against two moves it is not, against three it is. Both values are cut by the same amounts.
TEST(PassedPawns, TwoConnectedOnesBeatARook) {
    const struct {
        const char* fen;
        i32 difference;
    } cases[] = {
        {"1r4k1/8/3PP3/8/8/8/8/K6R", 200 + 16},
        {"5k2/3P4/4P3/8/8/r7/8/6KR", 200 + 16},  // on the seventh the king is in time for two, not for one
        {"1r3nk1/8/3PP3/8/8/8/8/K5NR", 16},      // a knight is no rook
        {"1r4k1/8/2P1P3/8/8/8/8/K6R", 16},       // apart
    };
    for (const auto& c : cases) {
        EXPECT_EQ(valueOf(c.fen) - valueOf(std::string(c.fen) + " b - - 0 1"), c.difference) << c.fen;
    }
}

}  // namespace
}  // namespace valku
