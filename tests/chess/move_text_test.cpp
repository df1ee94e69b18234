#include "chess/move_text.h"

#include "chess_test.h"

namespace valku {
namespace {

TEST(MoveText, ConsoleAndUci) {
    const struct {
        bool isChess960, arena;
        const char* fen;
        const char* move;
        const char* text;
        const char* uci;
    } cases[] = {
        {false, false, startPositionFen, "e2e4", "e2e4", "e2e4"},
        {false, false, "1n2k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7b8N", "a7b8N", "a7b8n"},
        {false, false, "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8c8l", "e8c8", "e8c8"},
        {true, false, "r3k2r/8/8/8/8/8/8/R3K2R b HAha - 0 1", "e8c8l", "O-O-O", "e8a8"},
        {true, false, "6k1/8/8/8/8/8/8/6KR w H - 0 1", "g1g1s", "O-O", "g1h1"},
        {true, true, "6k1/8/8/8/8/8/8/6KR w H - 0 1", "g1g1s", "O-O", "O-O"},
        {true, true, "r3k2r/8/8/8/8/8/8/R3K2R b HAha - 0 1", "e8c8l", "O-O-O", "O-O-O"},
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(c.isChess960, true, c.arena);
        setPosition(c.fen);
        const Move move = moveOf(c.move);
        EXPECT_EQ(moveToText(move), c.text) << c.fen;
        EXPECT_EQ(moveToUciText(move, *gamePosition.state), c.uci) << c.fen;
        // What we write we read.
        EXPECT_EQ(notation(uciTextToMove(c.uci, gamePosition)), c.move) << c.fen;
    }
}

// An empty `move` is one that is not there.
struct ReadCase {
    const char* fen;
    const char* text;
    const char* move;
};

void expectRead(std::initializer_list<ReadCase> cases) {
    for (const ReadCase& c : cases) {
        setPosition(c.fen);
        const Move move = uciTextToMove(c.text, gamePosition);
        EXPECT_EQ(move == nullMove ? "" : notation(move), c.move) << c.fen << ' ' << c.text;
    }
}

TEST(UciMove, NormalChess) {
    const char* castle = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
    expectRead({
        {startPositionFen, "e2e5", ""},
        {startPositionFen, "", ""},
        {startPositionFen, "e2", ""},
        {startPositionFen, "e2e9", ""},
        {startPositionFen, "O-O", ""},
        {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8", "a7a8Q"},
        {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8n", "a7a8N"},
        {"4k3/8/8/8/8/8/p7/4K3 b - - 0 1", "a2a1r", "a2a1R"},
        {"4k3/8/8/8/8/P7/8/4K3 w - - 0 1", "a3a4n", "a3a4"},  // no promotion there
        {"4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1", "e2c3", ""},    // pinned
        {castle, "e1c1", "e1c1l"},
        {castle, "O-O-O", "e1c1l"},
        {castle, "e1h1", ""},  // king takes rook is Chess960's form
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "O-O", "e8g8s"},
        {"4k1r1/8/8/8/8/8/8/4K2R w K - 0 1", "e1g1", ""},
        {"3k4/8/8/8/8/8/8/4R1K1 w - - 0 1", "e1c1", "e1c1"},  // a rook that goes the king's way
    });
}

TEST(UciMove, Chess960CastlingForms) {
    const Chess960Scope mode;
    const char* usual = "r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1";
    const char* usualBlack = "r3k2r/8/8/8/8/8/8/R3K2R b HAha - 0 1";
    expectRead({
        {usual, "e1g1", "e1g1s"},
        {usual, "e1c1", "e1c1l"},
        {usual, "e1a1", "e1c1l"},
        {usual, "a1f1", "e1c1l"},  // the rook moves over the king
        {usual, "a1d1", "a1d1"},   // or only up to it
        {usualBlack, "a8g8", "e8c8l"},
        {usualBlack, "O-O-O", "e8c8l"},
        {"5k2/8/8/8/8/8/8/5KR1 w G - 0 1", "f1g1", "f1g1s"},
        {"5k2/8/8/8/8/8/8/5KR1 w - - 0 1", "f1g1", ""},
        {"1k6/8/8/8/8/8/8/RK6 w A - 0 1", "b1a1", "b1c1l"},
        {"1k6/8/8/8/8/8/8/RK6 w A - 0 1", "b1c1", "b1c1"},  // one file: a plain move of the king
        {"6kr/8/8/8/8/8/8/6K1 b h - 0 1", "g8h8", "g8g8s"},
        {"4k3/8/8/8/8/8/8/4K2R w - - 0 1", "e1g1", ""},
    });
}

}  // namespace
}  // namespace valku
