#include <set>

#include "chess_test.h"

namespace valku {
namespace {

TEST(Checks, WorkedMoves) {
    const struct {
        const char* fen;
        const char* move;
        bool direct, discovered;
    } cases[] = {
        {"4k3/4p3/8/8/8/8/4R3/Q3K3 w - - 0 1", "a1a4", true, false},
        {"7k/8/8/8/3R4/8/8/Q3K3 w - - 0 1", "d4d5", false, true},  // a rook leaves the line of king and queen
        {"k7/8/8/P7/8/8/8/R3K3 w - - 0 1", "a5a6", false, false},  // a pawn stays on it
        {"k7/8/8/8/B7/8/8/Q3K3 w - - 0 1", "a4c6", true, true},
        {"k7/8/8/8/N7/8/8/B3K3 w - - 0 1", "a4c3", false, false},   // a bishop sees nothing along a file
        {"k7/8/8/8/N7/8/p7/R3K3 w - - 0 1", "a4c3", false, false},  // the first man behind decides
        {"k7/8/p7/8/N7/8/8/R3K3 w - - 0 1", "a4c3", false, false},  // and the way to the king must be free
        {"8/8/8/k3K2R/8/8/8/8 w - - 0 1", "e5e4", false, true},     // a king gives discovered check only
        {"7k/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8Q", false, false},   // a promotion is judged by the pawn
        {"7k/8/6P1/8/8/8/8/4K3 w - - 0 1", "g6g7", true, false},
        {"4k3/8/8/8/8/5p2/8/4K3 b - - 0 1", "f3f2", true, false},
        {"8/8/8/K2pP2q/8/8/8/4k3 w - d6 0 1", "e5d6", false, false},
        {"8/8/8/k2pP2R/8/8/8/4K3 w - d6 0 1", "e5d6", false, false},  // nor through the victim
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        EXPECT_EQ(givesDirectCheck(moveOf(c.move)), c.direct) << c.fen << ' ' << c.move;
        EXPECT_EQ(givesDiscoveredCheck(moveOf(c.move)), c.discovered) << c.fen << ' ' << c.move;
    }
}

// Of all moves from any square to any other exactly the generated ones are pseudo-legal, and those of them
// are legal that do not leave the king in check.
TEST(PseudoLegal, AgreesWithTheGenerators) {
    for (const u64 seed : {61u, 62u}) {
        RandomGame game(seed % 2 ? richPosition : "8/2p1p3/8/1P1P1P2/1p1p1p2/8/K1P1P2k/8 w - - 0 1", seed);
        for (int ply = 0; ply < 40; ++ply) {
            MoveList list;
            generateAllMoves(list);
            std::set<Move> ways;
            gamePosition = searchPosition;
            i32 legal = 0;
            for (i32 i = 0; i < list.count; ++i) {
                if (moveCastling(list.moves[i]) == noCastling) ways.insert(list.moves[i] & 0xFFFF);
                legal += isLegal(gamePosition, list.moves[i]);
            }
            EXPECT_EQ(static_cast<std::size_t>(legal), legalMoves().size()) << writeFen(gamePosition);
            EXPECT_EQ(countLegalMoves(gamePosition, list), legal) << writeFen(gamePosition);
            for (Move word = 0; word < 0x7878; ++word) {
                if ((word & 0x8888) && word % 7) continue;
                ASSERT_EQ(isPseudoLegal(word), ways.count(word) == 1)
                    << writeFen(gamePosition) << notation(word);
            }
            for (i32 i = 0; i < list.count; ++i) {
                const Move move = list.moves[i];
                EXPECT_EQ(isPseudoLegal(move), moveCastling(move) == noCastling) << notation(move);
                EXPECT_EQ(isPseudoLegal(gamePosition, move), isPseudoLegal(move));
                EXPECT_FALSE(isPseudoLegal(move | shortCastling << 24));
                if (gamePosition.board[moveFrom(move)] & pawnFlag) continue;
                const Move queen = gamePosition.sideToMove == White ? WhiteQueen : BlackQueen;
                EXPECT_FALSE(isPseudoLegal((move & 0xFFFF) | queen << 16)) << notation(move);
            }
            if (!game.playMove()) break;
        }
    }
    EXPECT_FALSE(isPseudoLegal(nullMove));
}

TEST(Repetition, OneEarlierOccurrenceIsEnough) {
    setPosition(startPositionFen);
    std::string repeated;
    for (const char* move : {"g1f3", "g8f6", "f3g1", "f6g8", "b1c3", "b8c6", "c3b1", "c6b8", "e2e3", "g8f6",
                             "g1f3", "f6g8", "f3g1"}) {
        play(move);
        repeated += isRepetition() ? 'r' : '-';
    }
    EXPECT_EQ(repeated, "---r---r----r");
}

TEST(Repetition, EndsOfTheWalk) {
    // The first position of the stack is the same but for the right to castle, which is in no key.
    setPosition("4k3/8/8/8/8/8/4P3/R3K3 w Q - 5 1");
    play("a1a2 e8e7 a2a1 e7e8");
    EXPECT_TRUE(isRepetition());
    searchPosition.state->fiftyMoves = 3;
    EXPECT_FALSE(isRepetition());
    // A count that goes back beyond the first record ends at that record.
    setPosition("4k3/8/8/8/8/8/4P3/R3K3 w Q - 90 1");
    play("a1a2 e8e7");
    EXPECT_FALSE(isRepetition());
    // Null moves do not stop it. Six plies back the side to move is the same again.
    setPosition("4k3/8/8/8/8/8/4P3/R3K3 w - - 0 1");
    makeNullMove();
    play("e8e7 a1a2");
    makeNullMove();
    EXPECT_FALSE(isRepetition());
    play("a2a1 e7e8");
    EXPECT_TRUE(isRepetition());
}

}  // namespace
}  // namespace valku
