#include "chess/game.h"

#include "chess_test.h"

namespace valku {
namespace {

// Games may be longer than the stack of records. Knights go out and home again, four plies a round.
TEST(LongGames, RepetitionsAreSeenAndASearchAlwaysFits) {
    constexpr int pliesOfASearch = 100;
    constexpr Move round[] = {makeMoveWord(G1, F3), makeMoveWord(G8, F6), makeMoveWord(F3, G1),
                              makeMoveWord(F6, G8)};
    setPosition(startPositionFen);
    for (int ply = 1; ply <= 3000; ++ply) {
        playGameMove(round[(ply - 1) % 4]);
        ASSERT_LT(stackedMoves(gamePosition), stateStackSize - pliesOfASearch);
        ASSERT_EQ(stackedMoves(gamePosition) + droppedGameMoves, ply);
        ASSERT_EQ(gamePosition.state->fiftyMoves, ply % 256);
        searchPosition = gamePosition;
        // Right after the count has started anew nothing has occurred before.
        ASSERT_EQ(isRepetition(), ply % 256 >= 4) << "ply " << ply;
    }
    EXPECT_EQ(writeFen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 184 1501");

    int takenBack = 0;
    while (takeBackGameMove()) ++takenBack;
    EXPECT_GE(takenBack, 250);
    EXPECT_EQ(takenBack + droppedGameMoves, 3000);
    // A new position has no history; of a short game nothing is dropped.
    setPosition(startPositionFen);
    EXPECT_FALSE(takeBackGameMove());
    playGameMove(round[0]);
    EXPECT_EQ(trimStateStack(gamePosition), 0);
    EXPECT_TRUE(takeBackGameMove());
    EXPECT_EQ(writeFen(), startPositionFen);
}

// The kings walk in circles of eleven and of ten squares, so that a position comes again after 220 plies; on
// the way the stack gets full.
TEST(LongGames, ARepetitionIsSeenAcrossTheTrimming) {
    constexpr int whiteCircle[] = {A1, B1, C1, D1, D2, D3, C3, B3, A3, A2, B2};
    constexpr int blackCircle[] = {H8, G8, F8, E8, E7, E6, F6, G6, H6, H7};
    setPosition("7k/8/8/8/8/8/7P/K7 w - - 0 1");
    for (int i = 0; i < 50; ++i) {
        for (const Move move :
             {makeMoveWord(A1, B1), makeMoveWord(H8, G8), makeMoveWord(B1, A1), makeMoveWord(G8, H8)})
            playGameMove(move);
    }
    playGameMove(makeMoveWord(H2, H3));
    for (int ply = 1; ply <= 230; ++ply) {
        const int n = (ply - 1) / 2;
        playGameMove(ply % 2 ? makeMoveWord(blackCircle[n % 10], blackCircle[(n + 1) % 10])
                             : makeMoveWord(whiteCircle[n % 11], whiteCircle[(n + 1) % 11]));
        searchPosition = gamePosition;
        ASSERT_EQ(isRepetition(), ply >= 220) << "ply " << ply;
    }
    EXPECT_GT(droppedGameMoves, 0);
}

}  // namespace
}  // namespace valku
