#include "book/pgn_reader.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "chess/fen.h"
#include "chess/move_text.h"
#include "chess/tables.h"
#include "platform/fault.h"
#include "platform/text_sink.h"

namespace valku {
namespace {

class PgnReader : public ::testing::Test, public TextSink {
  protected:
    void SetUp() override {
        if (squareMask[0] == 0) initChessTables();
        textSink = this;
    }
    void TearDown() override {
        textSink = nullptr;
        std::filesystem::remove(path);
    }
    void send(std::string_view text) override { told += text; }

    bool walk(const std::string& text, i32 limit = PgnGame::maxPlies) {
        std::ofstream(path, std::ios::binary) << text;
        games.clear();
        moves.clear();
        told.clear();
        return walkPgnFile(
            path, [this](const PgnPly& ply) { return see(ply); }, limit);
    }

    // A game's tags and result, then its moves with what is said of them.
    bool see(const PgnPly& p) {
        const PgnGame& g = p.game;
        std::ostringstream text;
        if (p.ply == 0) {
            games.emplace_back();
            for (const auto tag : {g.event, g.white, g.black, g.whiteElo, g.blackElo, g.round})
                text << tag << '|';
            text << g.resultText << ' ' << static_cast<i32>(g.result);
        }
        EXPECT_EQ(p.ply % 2 == 0, (p.position.sideToMove == White) == g.fen.empty());
        text << ' ' << moveToText(p.move) << g.plies[p.ply].glyphs;
        if (!g.plies[p.ply].comment.empty()) text << '{' << g.plies[p.ply].comment << '}';
        games.back() += text.str();
        moves += moveToText(p.move);
        return true;
    }

    const std::string path =
        ::testing::TempDir() + "valku_" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::vector<std::string> games;
    std::string moves, told;
};

// The last game but one castles with zeros; the last comment is never closed.
const std::string nastyFile =
    "\xEF\xBB\xBF"
    R"(% [Event "no tag"] e4
[Event "A "great" ] day"]
" d4
[White "One"][Black "Two"][WhiteElo "2400"][Site "dropped"][Round "3
{before} 1. e4! $10 {+0.31/12 2s} (1. d4 {) [x]} (1. c4 (1. b4)) d5 ; ) (
 1... Nf6) {mo"re} 1...e5 ?!$14 2.Nf3
% 2... a6 1-0
Nc6;rest { of line
3. "d4 1-0 ; *" Bb5+ (" 3. d4) d5 " a6 3-2 11-0 +1-0 4... $1 4.O-O#! {( [ } 1-0 ( {[} [ ) junk {[Event} ; [
1. d4 d5 2. c4" c5 *
[Event "open variation"]
1. c4 (1. e4 ( e5
[White "Passant"]
[FEN "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1"]
1... dxe3e.p. 2. Kd1 e2+ e.p. 3. Kxe2 0-1[Event "bad position"]
[FEN "nonsense"] 1. e4 1-0
[Event "bad move"]
1. e4 Ke7 2. d4 d5 1/2-1/2
[BlackElo "7"][Round "9"] 1. Nf3 Nf6 2. g3 g6 3. Bg2 Bg7 4. 0-0 d6 *
[White "Last"] 1. g4 e5 2. f3 Qh4# {mate
[Event "in a comment"]
1. a3 1-0
)";

TEST_F(PgnReader, RealFiles) {
    const auto expected = ::testing::ElementsAre(
        "A \"great\" ] day|One|Two|2400|||1-0 1 e2e4! $10{+0.31/12 2s} (1. d4 {) [x]} (1. c4 (1. b4)) d5 "
        "; ) (\n 1... Nf6) {mo\"re} e7e5?!$14 g1f3 b8c6{rest { of line} f1b5 a7a6 e1g1!{( [ }",
        "|||||| -1 d2d4 d7d5 c2c4", "open variation|||||| -1 c2c4", "|Passant|||||0-1 2 d4e3 e1d1 e3e2 d1e2",
        "bad move||||||1/2-1/2 0 e2e4", "||||7|9|* 3 g1f3 g8f6 g2g3 g7g6 f1g2 f8g7",
        "|Last||||| 4 g2g4 e7e5 f2f3 d8h4{mate\n[Event \"in a comment\"]\n1. a3 1-0\n}");
    const char* const expectedTold =
        "Error: the FEN of a game cannot be read: nonsense\n"
        "\nerror in convertPGNMove2move: move could not be correctly converted!\n"
        "error in convertPGNMove2move: value not 'N', 'B', 'R', 'Q' or 'K'!\nWent through 8 games...\n";
    EXPECT_TRUE(walk(nastyFile));
    EXPECT_THAT(games, expected);
    EXPECT_EQ(told, expectedTold);

    const std::string allMoves = moves;
    std::string windowsFile;
    for (const char c : nastyFile) windowsFile += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_TRUE(walk(windowsFile));
    EXPECT_EQ(moves, allMoves);
    EXPECT_EQ(told, expectedTold);

    // Cut off anywhere, it shows the beginning of the same moves.
    for (std::size_t length = 0; length < nastyFile.size(); length += 5) {
        EXPECT_TRUE(walk(nastyFile.substr(0, length)));
        EXPECT_EQ(moves, allMoves.substr(0, moves.size())) << length;
    }
    EXPECT_TRUE(walk(nastyFile, 1));
    EXPECT_EQ(moves, "e2e4d2d4c2c4d4e3e2e4g1f3g2g4");
}

TEST_F(PgnReader, LongAndManyGames) {
    std::string text = "[White \"Long\"]\n";
    for (int i = 0; i < 2500; ++i) text += "Nf3 {x} Nf6 Ng1 Ng8 {y} ";
    EXPECT_TRUE(walk(text + "{dropped} 1-0\n[White \"Next\"]\n1. e4 0-1"));
    ASSERT_EQ(games.size(), 2u);
    EXPECT_EQ(moves.size(), (512 + 1) * 4u);
    EXPECT_TRUE(games[0].ends_with(" f6g8{y}"));
    EXPECT_EQ(games[1], "|Next|||||0-1 2 e2e4");

    text.clear();
    for (int i = 0; i < 2001; ++i) text += "1. d4 *\n";
    EXPECT_TRUE(walk(text));
    EXPECT_EQ(games.size(), 2001u);
    EXPECT_EQ(told, "Went through 1000 games...\nWent through 2000 games...\nWent through 2001 games...\n");
}

// With work that grew with the square of the size, these would not end before the test's time is over.
TEST_F(PgnReader, HostileFiles) {
    for (const char* piece : {"(", "[", "{",  ")",   "\"",  "[\n",   "(\n[a\n", "1-0 [", "$",    "e4 (",
                              "N", "1", "1-", "e.p", ";\n", "[a \"", "{}",      "%",     "\xFF", " !"}) {
        std::string text = "1. e4 ";
        while (text.size() < 4'000'000) text += piece;
        EXPECT_TRUE(walk(text)) << piece;
        EXPECT_EQ(moves, "e2e4") << piece;
    }
    for (const std::string& wrong : {path + ".none", ::testing::TempDir(), std::string("/dev/null")}) {
        EXPECT_THAT([&] { walkPgnFile(wrong, {}, 1); },
                    ::testing::ThrowsMessage<Fault>("Could not open file " + wrong + "!"));
    }
}

}  // namespace
}  // namespace valku
