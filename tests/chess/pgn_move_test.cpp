#include "chess/pgn_move.h"

#include "chess_test.h"

namespace valku {
namespace {

constexpr const char* castle = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1";
constexpr const char* promote = "3n1n1k/4P3/8/8/8/8/8/4K3 w - - 0 1";

// The moves are pgn-extract's reading of the texts; an empty one is illegal or no move.
TEST(PgnMove, ReadsWhatGameFilesSay) {
    const struct {
        const char* fen;
        std::vector<std::pair<const char*, const char*>> moves;
    } cases[] = {
        {startPositionFen, {{"e4", "e2e4"}, {"e3", "e2e3"}, {"Nf3", "g1f3"}, {"e5", ""}, {"Ne2", ""}}},
        {"4k3/8/8/8/8/4P3/4P3/4K3 w - - 0 1", {{"e4", "e3e4"}, {"e3", ""}}},
        {"4k3/8/8/8/4P3/4R3/4P3/4K3 w - - 0 1", {{"e4", ""}, {"e5", "e4e5"}}},
        {"4k3/8/8/8/8/4n3/4P3/4K3 w - - 0 1", {{"e4", ""}}},
        {"4k3/8/8/8/1b6/2N5/8/4K1N1 w - - 0 1", {{"Ne2", "g1e2"}, {"Nce2", ""}}},  // c3 is pinned
        {"4k3/8/8/8/8/5N2/8/1N2K3 w - - 0 1", {{"Nbd2", "b1d2"}, {"Nfd2", "f3d2"}, {"Nad2", ""}}},
        {"4k3/8/8/R7/8/8/8/R3K3 w Q - 0 1", {{"R1a3", "a1a3"}, {"R5a3", "a5a3"}, {"Ra6", "a5a6"}}},
        {"8/6k1/8/8/4Q2Q/8/8/K6Q w - - 0 1", {{"Qh4e1", "h4e1"}, {"Qee1", "e4e1"}, {"Q1xe1", "h1e1"}}},
        {promote, {{"e8=Q", "e7e8Q"}, {"e8R", "e7e8R"}, {"e8", "e7e8Q"}, {"exd8=N", "e7d8N"}}},
        {promote, {{"exf8=R+", "e7f8R"}, {"exf8B", "e7f8B"}, {"exf8", "e7f8Q"}, {"e8=K", ""}}},
        {"4k3/8/8/8/8/8/4p3/3N1N1K b - - 0 1", {{"exd1=Q", "e2d1Q"}, {"e1=N", "e2e1N"}}},
        {"4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", {{"dxe3", "d4e3"}, {"d3", "d4d3"}, {"dxc3", ""}}},
        {"8/8/8/8/k2Pp2R/8/8/4K3 b - d3 0 1", {{"exd3", ""}, {"e3", "e4e3"}}},  // both pawns would go
        {"8/k7/8/8/3Pp3/8/8/4K1B1 b - d3 0 1", {{"exd3", ""}, {"Kb7", "a7b7"}}},
        {castle, {{"O-O", "e1g1s"}, {"O-O-O", "e1c1l"}, {"Kd1", "e1d1"}, {"Rxa8+", "a1a8"}}},
        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", {{"O-O", "e8g8s"}, {"O-O-O", "e8c8l"}}},
        {"4k3/8/8/8/8/5r2/8/R3K2R w KQ - 0 1", {{"O-O", ""}, {"O-O-O", "e1c1l"}, {"Ke2", "e1e2"}}},
        {"4k3/8/8/8/8/8/4r3/R3K3 w Q - 0 1", {{"Kxe2", "e1e2"}, {"Kd2", ""}, {"Ra2", ""}, {"O-O-O", ""}}},
    };
    for (const auto& c : cases) {
        for (const auto& [text, expected] : c.moves) {
            setPosition(c.fen);
            const char* complaint = "";
            const Move move = convertPGNMove2move(text, &complaint);
            EXPECT_EQ(move ? notation(move) : "", expected) << c.fen << ' ' << text;
            EXPECT_EQ(complaint == nullptr, move != nullMove) << c.fen << ' ' << text;
        }
    }
}

TEST(PgnMove, ComplaintsTellWhatIsWrong) {
    const std::string start = "error in convertPGNMove2move: ";
    const std::pair<std::string, std::vector<const char*>> cases[] = {
        {start + "value not between '1' and '8'!\n", {"exd", "exd9", "N", "Nf", "Nf9"}},
        {start + "value not between 'a' and 'h'!\n", {"ex", "ex5", "N3", "Nx3", "Ki2"}},
        {start + "value neither between '1' and '8' nor 'x'!\n", {"e", "e9", "ed5"}},
        {start + "value neither between '1'-'8' nor 'a'-'h' nor 'x'!\n", {"N-f3", "N9f3", "NNf3"}},
        {start + "value not 'N', 'B', 'R', 'Q' or 'K'!\n", {"", "+", "Pe4", "0-0", "O-"}},
        {'\n' + start + "move could not be correctly converted!\n",
         {"e5", "exd3", "exe3", "e1", "a8", "e4=Q", "e4e5", "e4-", "Nd2", "Ba3", "O-O", "O-O-", "Kxe2"}},
    };
    setPosition(startPositionFen);
    for (const auto& [complaint, texts] : cases) {
        for (const std::string_view text : texts) {
            const std::vector<char> exact(text.begin(), text.end());  // nothing to be read behind it
            const char* told = nullptr;
            EXPECT_EQ(convertPGNMove2move({exact.data(), exact.size()}, &told), nullMove) << text;
            EXPECT_EQ(told, complaint) << text;
        }
    }
}

// Against the generator: each legal move is found by its full text, and nothing else is ever found.
TEST(PgnMove, FindsEveryLegalMoveAndNoOther) {
    RandomGame game(richPosition, 7);
    for (int ply = 0; ply < 120 && game.playMove(); ++ply) {
        gamePosition = searchPosition;
        const std::vector<Move> legal = legalMoves();
        const std::string before = factsOf(gamePosition);
        for (const Move move : legal) {
            const std::string squares = notation(move), to = squares.substr(2);
            const u8 man = gamePosition.board[moveFrom(move)];
            std::string text = (man & kingFlag ? "K" : notation(makeMoveWord(0, 0, man)).substr(4)) + squares;
            if (man & pawnFlag) text = squares[0] == squares[2] ? to : squares.substr(0, 1) + 'x' + to;
            if (moveCastling(move)) text = moveCastling(move) == shortCastling ? "O-O" : "O-O-O";
            EXPECT_EQ(convertPGNMove2move(text), move) << text << ' ' << writeFen();
        }
        for (const std::string start : {"", "N", "B", "R", "Q", "K", "ax", "cx", "dx", "ex", "gx"}) {
            for (int square = A1; square <= H8; square = (square + 9) & ~8) {
                const Move move = convertPGNMove2move(start + squareText(square));
                EXPECT_EQ(std::count(legal.begin(), legal.end(), move), move != nullMove) << writeFen();
            }
        }
        EXPECT_EQ(factsOf(gamePosition), before);
    }
}

}  // namespace
}  // namespace valku
