#include "chess_test.h"

#include "chess/exchange.h"

namespace valku {
namespace {

// Figures computed by an independent program.
TEST(MoveGeneration, OrderAndMobility) {
    setPosition("1r4k1/P1P5/8/3pP3/2B1n3/1Q3R2/8/R3K3 w Q d6 0 1");
    MoveList list;
    EXPECT_EQ(generateCaptures(list, 0), 0);
    EXPECT_EQ(notation(list), "e5d6 a7b8Q a7b8R a7b8B a7b8N a7a8Q c7b8Q c7b8R c7b8B c7b8N c7c8Q c4d5 b3b8");
    EXPECT_EQ(list.mobility, 92);
    generateQuietMoves(list);
    EXPECT_EQ(notation(list),
              "a7a8R a7a8B a7a8N c7c8R c7c8B c7c8N e5e6 c4b5 c4a6 c4d3 c4e2 c4f1 f3f4 f3f5 f3f6 f3f7 f3f8 "
              "f3e3 f3d3 f3c3 f3g3 f3h3 f3f2 f3f1 a1a2 a1a3 a1a4 a1a5 a1a6 a1b1 a1c1 a1d1 b3a4 b3a2 b3c2 "
              "b3d1 b3b4 b3b5 b3b6 b3b7 b3a3 b3c3 b3d3 b3e3 b3b2 b3b1 e1d2 e1e2 e1f2 e1d1 e1f1 e1c1l");
    EXPECT_EQ(list.mobility, 92) << "quiet moves leave the mobility alone";
    generateAllMoves(list);
    EXPECT_EQ(notation(list),
              "a7b8Q a7b8R a7b8B a7b8N a7a8Q a7a8R a7a8B a7a8N c7b8Q c7b8R c7b8B c7b8N c7c8Q c7c8R c7c8B "
              "c7c8N e5d6 e5e6 c4b5 c4a6 c4d5 c4d3 c4e2 c4f1 f3f4 f3f5 f3f6 f3f7 f3f8 f3e3 f3d3 f3c3 f3g3 "
              "f3h3 f3f2 f3f1 a1a2 a1a3 a1a4 a1a5 a1a6 a1b1 a1c1 a1d1 b3a4 b3a2 b3c2 b3d1 b3b4 b3b5 b3b6 "
              "b3b7 b3b8 b3a3 b3c3 b3d3 b3e3 b3b2 b3b1 e1d2 e1e2 e1f2 e1d1 e1f1 e1c1l");
    EXPECT_EQ(list.mobility, list.count);
}

TEST(MoveGeneration, ThresholdLeavesSmallVictimsOut) {
    struct {
        const char* fen;
        i32 threshold;
        const char* captures;
        i32 highestLeftOut;
    } const cases[] = {
        {richPosition, 101, "e2a6 f3f6", 100},
        {richPosition, 371, "e2a6", 370},
        {richPosition, 2000, "", 381},
        // Promotions to a queen stay whatever the threshold; captures that promote are measured by their
        // victim.
        {"1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1", 2000, "a7a8Q", 580},
        {"4k3/8/8/8/8/8/p7/1Q2K3 b - - 0 1", 1160, "a2b1Q a2b1R a2b1B a2b1N a2a1Q", 0},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", 101, "", 100},
        // Kings take too. Of two pawns that can take en passant the one on the lower square is tried first.
        {"4k3/8/8/2PpP3/8/8/4q3/4K3 w - d6 0 1", 0, "c5d6 e5d6 e1e2", 0},
        {"4k3/8/8/8/2pPp3/8/8/4K3 b - d3 0 1", 0, "c4d3 e4d3", 0},
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        MoveList list;
        EXPECT_EQ(generateCaptures(list, c.threshold), c.highestLeftOut) << c.fen << " from " << c.threshold;
        EXPECT_EQ(notation(list), c.captures) << c.fen << " from " << c.threshold;
    }
}

// One piece on an otherwise empty board, so that the weights can be summed by hand.
TEST(MoveGeneration, MobilityWeighsTheSquaresThatNoPawnAttacks) {
    struct {
        const char* fen;
        i32 mobility;
    } const cases[] = {
        {"4k3/8/8/8/8/8/8/N3K3 w - - 0 1", 0 + 2 + 2},                     // a1, b3, c2
        {"4k3/8/8/8/8/3p4/8/N3K3 w - - 0 1", 0 + 2},                       // c2 is attacked
        {"4k3/8/8/8/8/8/1P6/B3K3 w - - 0 1", 0},                           // an own man ends the ray
        {"4k3/8/8/8/8/8/1p6/B3K3 w - - 0 1", 0 + 4},                       // an enemy's square is reached
        {"4k3/8/8/8/8/8/8/RK6 w - - 0 1", 0 + 0 + 2 + 2 + 2 + 2 + 4 + 4},  // the a-file
        {"8/3PPP2/3PQP2/3PPP2/8/8/8/K6k w - - 0 1", 2 * 4},                // a queen's own square, twice
        {"4k3/8/8/8/3r4/8/4N3/4K3 w - - 0 1", 4 + 2 + 4 + 2 + 4 + 6 + 0},  // a pinned knight counts
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        MoveList list;
        generateCaptures(list, 0);
        EXPECT_EQ(list.mobility, c.mobility) << c.fen;
    }
}

// No castling out of check or over an attacked square; into check is found after the move.
TEST(Castling, NeedsAFreeWay) {
    const struct {
        bool isChess960;
        const char* fen;
        const char* castlings;
    } cases[] = {
        {false, "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1g1s e1c1l"},
        {false, "4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1c1l"},           // f1 is attacked
        {false, "1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1g1s e1c1l"},    // b1 may be attacked
        {false, "4k3/4r3/8/8/8/8/8/R3K2R w KQ - 0 1", ""},               // out of check
        {false, "2r1k1r1/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1g1s e1c1l"},  // into check: found after the move
        {false, "4k3/8/8/8/8/8/8/RN2K1NR w KQ - 0 1", ""},
        {false, "4k3/8/8/8/8/8/6p1/R3K2R w KQ - 0 1", "e1c1l"},  // a pawn attacks f1
        {true, "1k6/8/8/8/8/8/8/RK1N4 w A - 0 1", ""},
        {true, "1r5k/8/8/8/8/8/8/RK6 w A - 0 1", ""},       // b1 is attacked
        {true, "2k5/8/8/8/8/8/8/RNK5 w A - 0 1", ""},       // the rook has to pass b1
        {true, "5k2/8/8/8/8/8/8/5KR1 w G - 0 1", "f1g1s"},  // onto the own rook
        {true, "4k3/8/8/8/8/8/8/4KRN1 w F - 0 1", ""},
        {true, "5k2/8/8/8/8/8/8/1RN2K2 w B - 0 1", ""},
        {true, "1k1r4/8/8/8/8/8/8/1K5R w H - 0 1", ""},  // d1 is on the king's way
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(c.isChess960);
        setPosition(c.fen);
        MoveList list;
        list.count = 0;
        generateCastlings(gamePosition, list);
        EXPECT_EQ(notation(list), c.castlings) << c.fen;
    }
}

// Whole random games: keys, lists of moves, exchange values and check tests of every position, hashed
// into one number for each. The numbers, and the games' last positions, were computed by an independent
// program.
class Digest {
  public:
    void add(i64 value) { sum_ = (sum_ ^ static_cast<u64>(value)) * 0x100000001b3u; }
    void add(const MoveList& list) {
        add(list.count);
        for (i32 i = 0; i < list.count; ++i) add(list.moves[i]);
    }
    u64 sum() const { return sum_; }

  private:
    u64 sum_ = 0xcbf29ce484222325u;
};

struct GameCase {
    const char* fen;
    bool isChess960;
    u64 seed;
    u64 keys, moves, exchanges, checks;
    const char* last;
};

const GameCase games[] = {
    {startPositionFen, false, 1, 0x2eeca8fce1057897, 0xea138026609cd563, 0x642ef3e7acda2351,
     0x73c665fb3644b695, "6r1/2Bk4/1np5/6R1/P5p1/6Pp/7K/8 w - - 5 101"},
    {richPosition, false, 5, 0xf48e64aad069ddbe, 0x7722dc30a4ca1480, 0x8f93ba855f208748, 0x403130f07fec0ef9,
     "1N6/6br/8/2p4P/5p2/3N4/8/1k5K w - - 8 101"},
    {"n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1", false, 6, 0x61b6f84e87ab47e1, 0x41917667ba370b93,
     0x6085a3aff046428a, 0x34e57e471157e5c5, "4k3/8/8/3K4/8/8/8/8 b - - 85 101"},
    {"r3k2r/pPppqpb1/bn2pnp1/3PN3/1p2P1pP/2N2Q2/PPPBBP2/R3K2R b KQkq h3 0 1", false, 7, 0xb709e4dbd92975f0,
     0xccb5be50ed6d4456, 0xecc992260a9b46c0, 0x1a1a1b5eff313f47,
     "8/5k2/8/1p3p2/1P3P2/1P5p/1K6/8 b - - 2 101"},
    {"rk2r3/pppppppp/8/8/8/8/PPPPPPPP/RK2R3 w EAea - 0 1", true, 8, 0x49162b5e5d941daf, 0x8ba3ec608862f388,
     0x75e39f8c1f6f2245, 0x735204ed2c56a306, "4k3/8/P5P1/2r5/8/1K4R1/7n/8 w - - 1 101"},
    {"nqbbrkrn/pppppppp/8/8/8/8/PPPPPPPP/NQBBRKRN w GEge - 0 1", true, 9, 0xf19b1a1032e5042c,
     0x3111d7fc9ada0d63, 0x5746ed3f601b28d9, 0x7884e23fec7c4cc8,
     "2k2br1/8/6P1/P3p2p/2B4P/4K3/3R4/6N1 w - - 4 101"},
};

TEST(RandomGames, AgreeWithAnIndependentModel) {
    for (const GameCase& c : games) {
        const Chess960Scope mode(c.isChess960);
        RandomGame game(c.fen, c.seed);
        Digest keys, moves, exchanges, checks;
        int plies = 0;
        for (; plies < 200; ++plies) {
            const StateRecord& s = *searchPosition.state;
            for (const u64 value : {u64{s.hashLow}, u64{s.hashHigh}, s.pawnHash})
                keys.add(static_cast<i64>(value));
            for (const u8 square : s.castlings) keys.add(square);
            keys.add(s.epField);
            keys.add(s.fiftyMoves);
            MoveList list;
            for (const i32 threshold : {0, 101, 371, 2000}) {
                moves.add(generateCaptures(list, threshold));
                moves.add(list.mobility);
                moves.add(list);
            }
            generateQuietMoves(list);
            moves.add(list);
            generateAllMoves(list);
            moves.add(list);
            for (i32 i = 0; i < list.count; ++i) {
                const Move move = list.moves[i];
                exchanges.add(staticExchange(move));
                for (const i32 threshold : {-200, 0, 100, 370}) exchanges.add(exchangeBound(move, threshold));
                checks.add(2 * givesDirectCheck(move) + givesDiscoveredCheck(move));
            }
            if (!game.playMove()) break;
        }
        EXPECT_EQ(plies, 200) << c.fen;
        EXPECT_EQ(writeFen(searchPosition), c.last) << c.fen;
        EXPECT_EQ(keys.sum(), c.keys) << c.fen;
        EXPECT_EQ(moves.sum(), c.moves) << c.fen;
        EXPECT_EQ(exchanges.sum(), c.exchanges) << c.fen;
        EXPECT_EQ(checks.sum(), c.checks) << c.fen;
    }
}

}  // namespace
}  // namespace valku
