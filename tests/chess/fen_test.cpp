#include "chess/fen.h"

#include <random>

#include "chess_test.h"

namespace valku {
namespace {

TEST(Fen, ComesBackAsItWent) {
    for (const char* fen :
         {startPositionFen, richPosition, "8/8/8/8/8/4k3/8/4K2r w - - 99 1",
          "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "4k3/8/8/8/1pP5/8/8/4K3 b - c3 0 1",
          "rnbqkbnr/8/8/8/8/8/8/RNBQKBNR b Qk - 12 1", "R7/8/2qN1b2/8/8/k7/8/6K1 b - - 3 1"}) {
        setPosition(fen);
        EXPECT_EQ(writeFen(), fen);
    }
}

TEST(Fen, ReadsWhatIsUsualAndDropsWhatCannotBe) {
    const struct {
        const char* fen;
        const char* read;
    } cases[] = {
        {"r3k3/8/8/8/8/8/8/4K3 b q -", "r3k3/8/8/8/8/8/8/4K3 b q - 0 1"},
        {"r3k3/8/8/8/8/8/8/4K3 b q ", "r3k3/8/8/8/8/8/8/4K3 b q - 0 1"},
        {"r3k3/8/8/8/8/8/8/4K3 b", "r3k3/8/8/8/8/8/8/4K3 b - - 0 1"},
        {"  4k3/8/8/8/8/8/8/4K3   b  -  -  3 94 \r", "4k3/8/8/8/8/8/8/4K3 b - - 3 1"},
        {"4k3/9/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
        {"4k3/8/8/8/8/8/8/4K3 w - - 99999999999999 1", "4k3/8/8/8/8/8/8/4K3 w - - 255 1"},
        // Rights without king and rook on their squares
        {"4k2r/8/8/8/8/8/8/R3K3 w KQkq - 0 1", "4k2r/8/8/8/8/8/8/R3K3 w Qk - 0 1"},
        {"r4k1r/8/8/8/8/8/8/R4K1R w KQkq - 0 1", "r4k1r/8/8/8/8/8/8/R4K1R w - - 0 1"},
        {"r2k3r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "r2k3r/8/8/8/8/8/8/R3K2R w KQ - 0 1"},
        {"4k3/8/8/8/8/8/8/R3K2R w QKxy - 0 1", "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1"},
        // En passant squares without an enemy pawn before them, or of the wrong side
        {"4k3/8/8/4P3/8/8/8/4K3 w - d6 0 1", "4k3/8/8/4P3/8/8/8/4K3 w - - 0 1"},
        {"4k3/8/3n4/3pP3/8/8/8/4K3 w - d6 0 1", "4k3/8/3n4/3pP3/8/8/8/4K3 w - - 0 1"},
        {"4k3/8/8/3pP3/8/8/8/4K3 b - d6 0 1", "4k3/8/8/3pP3/8/8/8/4K3 b - - 0 1"},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - z9 0 1", "4k3/8/8/3pP3/8/8/8/4K3 w - - 0 1"},
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        EXPECT_EQ(writeFen(), c.read) << c.fen;
    }
}

TEST(Fen, RefusedTextsKeepTheOldPosition) {
    setPosition(startPositionFen);
    searchPosition = gamePosition;
    makeMove(gamePosition, moveOf("e2e4"));
    const std::string before = writeFen();
    const std::string refused[] = {"",
                                   "8/8/8/8/8/8/8/8 w - - 0 1",       // no kings
                                   "4k2k/8/8/8/8/8/8/4K3 w - - 0 1",  // three
                                   "4k3/8/8/8/8/8/8/4K3",             // nothing after the placement
                                   "4k3/8/8/8/8/8/4K3 w - - 0 1",     // seven ranks
                                   "4k3/8/8/8/8/8/8/4K2 w - - 0 1",
                                   "4k3/8/8/8/8/8/8/8/4K3 w - - 0 1",  // nine
                                   "4k3/8/8/3X4/8/8/8/4K3 w - - 0 1",
                                   "4k2P/8/8/8/8/8/8/4K3 w - - 0 1",               // pawns on the last ranks
                                   "4k3/PPPPPPPP/P7/8/8/8/8/4K3 w - - 0 1",        // nine pawns
                                   "4k3/qqqqqqqq/qq6/8/8/8/8/4K3 w - - 0 1",       // ten queens
                                   "4k3/8/RRRRRRRR/RRR5/8/8/8/4K3 w - - 0 1",      // eleven rooks
                                   "4k3/8/8/NNNNNNNN/BBBBBBBB/8/8/4K3 w - - 0 1",  // seventeen men
                                   "4k3/8/8/8/8/8/4Q3/4K3 w - - 0 1",  // the side that has moved is in check
                                   std::string(300, 'K'),
                                   std::string(300, '8').append(" w - - 0 1"),
                                   "\xff\xfe\x01 w - - 0 1"};
    for (const std::string& fen : refused) {
        EXPECT_FALSE(readFen(fen)) << fen;
        EXPECT_EQ(writeFen(), before) << fen;
        EXPECT_EQ(stackedMoves(gamePosition), 1) << fen;
    }
}

// Damaged texts are refused without any effect, or give a position whose FEN gives it again.
TEST(Fen, SpoiltTextsAreRefusedOrReadSoundly) {
    constexpr std::string_view letters = "pnbrqkPNBRQK12345678/9 -wbAHah0\t\xff";
    std::mt19937 random(3);
    int read = 0;
    for (int i = 0; i < 20000; ++i) {
        const Chess960Scope mode(i % 2 == 1);
        std::string text = i % 3 == 0 ? richPosition : "1r1k2r1/8/8/2pP4/8/8/8/1R1K2R1 w GBgb c6 5 1";
        for (auto changes = 1 + random() % 4; changes > 0 && !text.empty(); --changes) {
            const std::size_t at = random() % text.size();
            const char letter = letters[random() % letters.size()];
            if (const auto way = random() % 4; way == 0)
                text[at] = letter;
            else if (way == 1)
                text.erase(at, 1 + random() % 3);
            else if (way == 2)
                text.insert(at, 1, letter);
            else
                text.resize(at + 1);
        }
        const std::string before = writeFen();
        if (!readFen(text)) {
            ASSERT_EQ(writeFen(), before) << text;
            continue;
        }
        ++read;
        const std::string written = writeFen();
        ASSERT_TRUE(readFen(written)) << text;
        ASSERT_EQ(writeFen(), written) << text;
    }
    EXPECT_GT(read, 1000);
}

TEST(Fen, FullListsAreStillClosed) {
    setPosition("4k3/4p3/8/RRRRRRRR/RR6/8/8/4K3 w - - 0 1");
    EXPECT_EQ(gamePosition.whiteRooks[10], noSquare);
    EXPECT_EQ(gamePosition.whiteRooks[0], A5);  // in reading order, a8 first
    EXPECT_EQ(gamePosition.whiteRooks[9], B4);
}

TEST(Fen, Chess960Rights) {
    const struct {
        bool shredder, arena;
        const char* fen;
        const char* read;
    } cases[] = {
        {true, false, "r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1", "AHah"},
        {true, false, "1r1k2r1/8/8/8/8/8/8/1R1K2R1 w GBgb - 0 1", "BGbg"},
        {true, false, "1r1k2r1/8/8/8/8/8/8/1R1K2R1 w AHg - 0 1", "g"},      // no rooks there
        {true, false, "8/1r1k2r1/8/8/8/8/8/1R1K2R1 w BGbg - 0 1", "BG"},    // the king has left its rank
        {true, false, "rr1k2rr/8/8/8/8/8/8/RR1K2RR w KQkq - 0 1", "AHah"},  // the outermost rooks
        {false, false, "rr1k2rr/8/8/8/8/8/8/RR1K2RR w - - 0 1", "BGbg"},    // derived: the nearest
        {true, true, "rr1k2rr/8/8/8/8/8/8/RR1K2RR w AHah - 0 1", "BGbg"},
        {true, true, "3k2r1/8/8/8/8/8/8/R2K4 w - - 0 1", "Ag"},
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(true, c.shredder, c.arena);
        setPosition(c.fen);
        const std::string text = writeFen();
        const std::size_t from = text.find(" w ") + 3;
        EXPECT_EQ(text.substr(from, text.find(' ', from) - from), c.read) << c.fen;
    }
}

TEST(Fen, MoveNumberCountsTheMovesOfTheGame) {
    setPosition(startPositionFen);
    play("e2e4 c7c5 g1f3 d7d6 d2d4 c5d4");
    EXPECT_EQ(writeFen(searchPosition), "rnbqkbnr/pp2pppp/3p4/8/3pP3/5N2/PPP2PPP/RNBQKB1R w KQkq - 0 4");
}

TEST(MirrorPosition, ExchangesColorsAndRanks) {
    const struct {
        bool isChess960;
        const char* fen;
        const char* mirrored;
    } cases[] = {
        {false, "r3k2r/p6p/8/3pP3/8/2N5/P6P/R2QK3 w Qk d6 5 1",
         "r2qk3/p6p/2n5/8/3Pp3/8/P6P/R3K2R b Kq d3 5 1"},
        {true, "5kr1/8/8/8/8/8/8/R3K3 w A - 0 1", "r3k3/8/8/8/8/8/8/5KR1 b a - 0 1"},
    };
    for (const auto& c : cases) {
        const Chess960Scope mode(c.isChess960);
        setPosition(c.fen);
        mirrorPosition();
        EXPECT_EQ(writeFen(), c.mirrored);
        const Position mirrored(gamePosition);
        setPosition(c.mirrored);
        EXPECT_TRUE(factsOf(mirrored) == factsOf(gamePosition)) << c.fen;
        EXPECT_EQ(mirrored.state->hashLow, gamePosition.state->hashLow);
        mirrorPosition();
        EXPECT_EQ(writeFen(), c.fen);
    }
}

}  // namespace
}  // namespace valku
