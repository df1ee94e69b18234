#include "chess_test.h"

namespace valku {
namespace {

// Every position of the games is the one that its FEN sets up, and every move is taken back exactly,
// pseudo-legal ones too; with the functions for any position as with those for searchPosition.
TEST(MakeMove, EveryMoveOfRandomGamesComesBack) {
    const struct {
        const char* fen;
        bool isChess960;
    } starts[] = {
        {startPositionFen, false},
        {richPosition, false},
        {"n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", false},
        {"r3k2r/pPppqpb1/bn2pnp1/3PN3/1p2P1pP/2N2Q2/PPPBBP2/R3K2R b KQkq h3 0 1", false},
        {"rk2r3/pppppppp/8/8/8/8/PPPPPPPP/RK2R3 w EAea - 0 1", true},
        {"1r3kr1/p5p1/8/2n5/5N2/8/P5P1/1R3KR1 b GBgb - 0 1", true},
    };
    for (const auto& start : starts) {
        const Chess960Scope mode(start.isChess960);
        for (const u64 seed : {11u, 12u}) {
            RandomGame game(start.fen, seed);
            for (int ply = 0; ply < 120; ++ply) {
                const std::string before = factsOf(searchPosition);
                Position twin(searchPosition);
                for (const Move move : legalMoves()) {
                    const std::string where = writeFen(searchPosition) + " " + notation(move);
                    makeMove(move);
                    makeMove(twin, move);
                    ASSERT_TRUE(readFen(writeFen(searchPosition))) << where;
                    ASSERT_TRUE(factsOf(searchPosition) == factsOf(gamePosition)) << where;
                    ASSERT_TRUE(factsOf(twin) == factsOf(gamePosition)) << where;
                    unmakeMove();
                    unmakeMove(twin);
                    ASSERT_TRUE(factsOf(searchPosition) == before) << where;
                }
                ASSERT_TRUE(factsOf(twin) == before);
                if (!game.playMove()) break;
            }
            while (stackedMoves(searchPosition) > 0) unmakeMove();
            setPosition(start.fen);
            EXPECT_TRUE(factsOf(searchPosition) == factsOf(gamePosition)) << start.fen;
        }
    }
}

// A constant in the key takes the place of the rook's keys, also if the king stays or lands on its own rook.
TEST(Keys, CastlingLeavesAConstantForTheRook) {
    const struct {
        bool isChess960;
        const char* fen;
        const char* move;
        int king;
        u32 constant;
        const char* after;
    } cases[] = {
        {false, "4k3/8/8/8/8/8/8/R3K2R w KQ - 4 1", "e1g1s", WhiteKing, 4, "4k3/8/8/8/8/8/8/R4RK1 b - - 5 1"},
        {false, "r3k2r/8/8/8/8/8/8/4K3 b kq - 4 1", "e8g8s", BlackKing, 16,
         "r4rk1/8/8/8/8/8/8/4K3 w - - 5 1"},
        {true, "6k1/8/8/8/8/8/8/6KR w H - 4 1", "g1g1s", WhiteKing, 4, "6k1/8/8/8/8/8/8/5RK1 b - - 5 1"},
        {true, "5k2/8/8/8/8/8/8/5KR1 w G - 4 1", "f1g1s", WhiteKing, 4, "5k2/8/8/8/8/8/8/5RK1 b - - 5 1"},
        {true, "1rk5/8/8/8/8/8/8/7K b b - 4 1", "c8c8l", BlackKing, 32, "2kr4/8/8/8/8/8/8/7K w - - 5 1"},
        {true, "1k6/8/8/8/8/8/8/RK6 w A - 4 1", "b1c1l", WhiteKing, 8, "1k6/8/8/8/8/8/8/2KR4 b - - 5 1"},
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(c.isChess960);
        setPosition(c.fen);
        const Move move = moveOf(c.move);
        const int from = moveFrom(move), to = moveTo(move);
        makeMove(move);
        EXPECT_EQ(writeFen(searchPosition), c.after);
        EXPECT_EQ(searchPosition.state->hashLow ^ gamePosition.state->hashLow,
                  pieceKeyLow[c.king][from] ^ pieceKeyLow[c.king][to] ^ c.constant ^ 1)
            << c.fen;
        EXPECT_EQ(searchPosition.state->hashHigh ^ gamePosition.state->hashHigh,
                  pieceKeyHigh[c.king][from] ^ pieceKeyHigh[c.king][to] ^ c.constant ^ 1)
            << c.fen;
    }
}

TEST(NullMove, PassesAndComesBack) {
    setPosition("4k3/8/8/8/3pP3/8/8/4K2R b K e3 7 1");
    makeNullMove();
    EXPECT_EQ(writeFen(searchPosition), "4k3/8/8/8/3pP3/8/8/4K2R w K - 8 1");
    EXPECT_EQ(searchPosition.state[-1].captured, empty);
    Position placed(searchPosition);
    computeDerived(placed);
    EXPECT_EQ(searchPosition.state->hashLow, placed.state->hashLow);
    EXPECT_EQ(searchPosition.state->hashHigh, placed.state->hashHigh);
    makeNullMove();
    EXPECT_EQ(writeFen(searchPosition), "4k3/8/8/8/3pP3/8/8/4K2R b K - 9 2");
    unmakeNullMove();
    unmakeNullMove();
    EXPECT_TRUE(factsOf(searchPosition) == factsOf(gamePosition));
}

}  // namespace
}  // namespace valku
