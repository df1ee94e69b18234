#include "chess/game_end.h"

#include "chess/chess_test.h"

namespace valku {
namespace {

TEST(GameEnds, OfPositions) {
    using enum GameEnd;
    const struct {
        const char* fen;
        GameEnd unclaimed, claimed;
    } cases[] = {
        {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", stalemate, stalemate},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 99 80", none, none},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 100 80", none, fiftyMoves},
        {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", insufficientMaterial, insufficientMaterial},
        {"4k3/8/8/8/8/8/8/4KN2 w - - 0 1", insufficientMaterial, insufficientMaterial},
        {"4kb2/8/8/8/8/8/8/4K3 w - - 0 1", insufficientMaterial, insufficientMaterial},
        {"4kb2/8/8/8/8/8/8/4KB2 w - - 0 1", none, none},
        {"4k3/7p/8/8/8/8/8/4K3 w - - 0 1", none, none},
    };
    for (const auto& c : cases) {
        setPosition(c.fen);
        EXPECT_EQ(findGameEnd(false), c.unclaimed) << c.fen;
        EXPECT_EQ(findGameEnd(true), c.claimed) << c.fen;
    }
}

}  // namespace
}  // namespace valku
