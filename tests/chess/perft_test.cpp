#include "chess_test.h"

namespace valku {
namespace {

u64 perft(int depth) {
    MoveList list;
    generateAllMoves(list);
    u64 leaves = 0;
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(list.moves[i]);
        if (!leftKingInCheck()) leaves += depth == 1 ? 1 : perft(depth - 1);
        unmakeMove();
    }
    return leaves;
}

// Published counts, and for the last two positions those of an unrelated engine.
TEST(Perft, CountsLegalMoves) {
    const struct {
        bool isChess960;
        const char* fen;
        int depth;
        u64 leaves;
    } cases[] = {
        {false, "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 5, 4865609},
        {false, richPosition, 4, 4085603},
        {false, "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 6, 11030083},
        {false, "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 4, 422333},
        {false, "r2q1rk1/pP1p2pp/Q4n2/bbp1p3/Np6/1B3NBn/pPPP1PPP/R3K2R b KQ - 0 1", 4, 422333},
        {false, "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 4, 2103487},
        {false, "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10", 4, 3894594},
        {false, "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", 5, 3605103},
        {true, "bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", 4, 326672},
        {true, "2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe - 1 9", 4, 667366},
        {true, "qbbnnrkr/2pp2pp/p7/1p2pp2/8/P3PP2/1PPP1KPP/QBBNNR1R w hf - 0 9", 4, 382958},
        {true, "1nbbnrkr/p1p1ppp1/3p4/1p3P1p/3Pq2P/8/PPP1P1P1/QNBBNRKR w HFhf - 0 9", 4, 1171749},
        {true, "rk2r3/p2p4/1p6/8/8/8/8/RK2R3 w EAea - 0 1", 5, 4609347},
        {true, "1r3kr1/p5p1/8/2n5/5N2/8/P5P1/1R3KR1 b GBgb - 0 1", 4, 458617},
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(c.isChess960);
        setPosition(c.fen);
        EXPECT_EQ(perft(c.depth), c.leaves) << c.fen << " depth " << c.depth;
    }
}

}  // namespace
}  // namespace valku
