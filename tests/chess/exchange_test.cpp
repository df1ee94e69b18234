#include "chess/exchange.h"

#include "chess_test.h"

namespace valku {
namespace {

TEST(StaticExchange, WorkedExchanges) {
    const struct {
        const char* fen;
        const char* move;
        i32 value;
    } cases[] = {
        {"4k3/8/8/3p4/8/8/3Q4/4K3 w - - 0 1", "d2d5", 100},
        {"4k3/8/2p5/3p4/8/8/3Q4/4K3 w - - 0 1", "d2d5", 100 - 1160},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 0},    // en passant takes nothing from its square
        {"4k1n1/7P/8/8/8/8/8/4K3 w - - 0 1", "h7g8Q", 370},  // the promoting man counts as a pawn
        {"5rn1/k6P/8/8/8/8/8/4K3 w - - 0 1", "h7g8Q", 370 - 100},
        {"1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8Q", -100},
        {"4k3/8/3r4/8/8/3R4/3R4/3RK3 w - - 0 1", "d3d6", 580},
        {"4k3/3r4/3p4/8/8/3R4/3R4/4K3 w - - 0 1", "d3d6", 100},    // the rook behind the first mover is seen
        {"3rk3/3r4/3p4/8/8/3R4/3R4/4K3 w - - 0 1", "d3d6", 100},   // behind the recapturing one: not
        {"8/8/3k4/3p4/4K3/8/8/8 w - - 0 1", "e4d5", 100 - 30000},  // a king on a defended square
        {"8/8/4k3/3p4/8/2K5/3R4/8 w - - 0 1", "d2d5", 100 - 580},
        {"8/8/4k3/3p4/2P5/2K5/3R4/8 w - - 0 1", "d2d5", 100},  // the king cannot recapture into a pawn
        {richPosition, "f3f6", 370 - 1160},
        {richPosition, "e2a6", 381},
        {richPosition, "f3h3", 100 - 580},  // rook h8 takes, and rook h1 takes back
        {richPosition, "f3d3", -779},       // bishop a6 takes the queen, bishop e2 takes back
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        EXPECT_EQ(staticExchange(moveOf(c.move)), c.value) << c.fen << ' ' << c.move;
    }
}

// Both functions agree for every move and every threshold below a king, and leave the position as it was.
TEST(ExchangeBound, ReachesTheThresholdExactlyWhenTheExchangeDoes) {
    for (const char* fen :
         {startPositionFen, "r1bqk2r/pp2bppp/2n1pn2/2pp4/2PP4/2N1PN2/PP2BPPP/R1BQ1RK1 w kq - 0 1"}) {
        RandomGame game(fen, 71);
        for (int ply = 0; ply < 120; ++ply) {
            MoveList list;
            generateAllMoves(list);
            const std::string before = factsOf(searchPosition);
            for (i32 i = 0; i < list.count; ++i) {
                const i32 value = staticExchange(list.moves[i]);
                if (value < -20000) continue;
                ASSERT_GE(exchangeBound(list.moves[i], value), value) << notation(list.moves[i]);
                ASSERT_LE(exchangeBound(list.moves[i], value + 1), value) << notation(list.moves[i]);
                for (i32 threshold = -1200; threshold <= 1200; threshold += i % 2 ? 19 : 20) {
                    ASSERT_EQ(exchangeBound(list.moves[i], threshold) >= threshold, value >= threshold)
                        << writeFen(searchPosition) << ' ' << notation(list.moves[i]) << " at " << threshold;
                }
            }
            ASSERT_TRUE(factsOf(searchPosition) == before);
            if (!game.playMove()) break;
        }
    }
}

// Below the threshold the result is an estimate of the gain that the quiescence search goes on with.
TEST(ExchangeBound, EstimatesOfLosingMoves) {
    const struct {
        const char* move;
        i32 threshold, result;
    } cases[] = {{"d5e6", 370, 100}, {"d5d6", -200, -100}, {"e5g6", -200, -270}, {"e5g6", 0, -170},
                 {"e5g6", 370, 100}, {"f3f6", 0, -409},    {"f3f6", 370, -409},  {"f3h3", 0, -480},
                 {"f3h3", 370, 100}, {"f3h5", 0, -1060},   {"e2d3", -200, -100}, {"e2c4", 0, -11},
                 {"c3a4", 100, 0}};
    for (const auto& c : cases) {
        setPosition(richPosition);
        EXPECT_EQ(exchangeBound(moveOf(c.move), c.threshold), c.result) << c.move << " at " << c.threshold;
    }
}

}  // namespace
}  // namespace valku
