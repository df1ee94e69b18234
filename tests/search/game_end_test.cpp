#include "search/game_end.h"

#include <ostream>

#include "chess/chess_test.h"
#include "chess/game.h"

namespace valku {

void PrintTo(GameEnd end, std::ostream* out) {
    *out << "game end " << static_cast<int>(end);
}

namespace {

TEST(GameEnds, OfPositions) {
    const struct {
        const char* fen;
        GameEnd unclaimed, claimed;
    } cases[] = {
        {startPositionFen, GameEnd::none, GameEnd::none},
        {"rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3", GameEnd::blackMates,
         GameEnd::blackMates},
        {"R5k1/5ppp/8/8/8/8/8/4K3 b - - 0 1", GameEnd::whiteMates, GameEnd::whiteMates},
        {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", GameEnd::stalemate, GameEnd::stalemate},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 99 80", GameEnd::none, GameEnd::none},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 100 80", GameEnd::none, GameEnd::fiftyMoves},
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", GameEnd::insufficientMaterial, GameEnd::insufficientMaterial},
        {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", GameEnd::insufficientMaterial, GameEnd::insufficientMaterial},
        {"4kb2/8/8/8/8/8/8/4K3 w - - 0 1", GameEnd::insufficientMaterial, GameEnd::insufficientMaterial},
        {"4kb2/8/8/8/8/8/8/4KB2 w - - 0 1", GameEnd::none, GameEnd::none},
        {"4k3/8/8/8/8/8/8/4KNN1 w - - 0 1", GameEnd::none, GameEnd::none},
        {"4k3/7p/8/8/8/8/8/4K3 w - - 0 1", GameEnd::none, GameEnd::none},
        {"4k3/8/8/8/8/8/8/4KQ2 b - - 0 1", GameEnd::none, GameEnd::none},
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        EXPECT_EQ(findGameEnd(false), c.unclaimed) << c.fen;
        EXPECT_EQ(findGameEnd(true), c.claimed) << c.fen;
        EXPECT_EQ(writeFen().substr(0, 20), std::string(c.fen).substr(0, 20));
    }
}

TEST(GameEnds, TheThirdOccurrenceIsARepetition) {
    constexpr Move round[] = {makeMoveWord(G1, F3), makeMoveWord(G8, F6), makeMoveWord(F3, G1),
                              makeMoveWord(F6, G8)};
    setPosition(startPositionFen);
    for (int ply = 1; ply <= 12; ++ply) {
        playGameMove(round[(ply - 1) % 4]);
        EXPECT_EQ(findGameEnd(true), ply >= 8 ? GameEnd::repetition : GameEnd::none) << ply;
        EXPECT_EQ(findGameEnd(false), GameEnd::none) << ply;
    }
}

}  // namespace
}  // namespace valku
