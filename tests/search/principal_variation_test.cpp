#include "search/principal_variation.h"

#include <set>

#include "chess/chess_test.h"
#include "search/hash_table.h"

namespace valku {
namespace {

class PrincipalVariation : public ::testing::Test {
  protected:
    void SetUp() override {
        setHashBuckets(65536);
        ASSERT_TRUE(createHashTable());
    }
    void TearDown() override { releaseHashTable(); }

    // Stores each move of a line for the position that it is played in, and goes back to the first one.
    static void storeLine(const std::string& moves) {
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            const Move move = moveOf(word);
            const StateRecord& s = *searchPosition.state;
            storeLowerBound(1, s.hashHigh, s.hashLow, 0, 8, move, s.fiftyMoves, 0);
            makeMove(move);
        }
        while (stackedMoves(searchPosition) > 0) unmakeMove();
    }

    static std::string rebuilt() {
        Line line{};
        line.moves[maxLineMoves] = 99;
        rebuildPv(searchPosition, line);
        std::string text;
        for (int i = 0; line.moves[i]; ++i) {
            if (i) text += ' ';
            text += notation(line.moves[i]);
        }
        EXPECT_EQ(stackedMoves(searchPosition), 0);
        return text;
    }
};

TEST_F(PrincipalVariation, EndsWhereTheTableKnowsNoMove) {
    setPosition(startPositionFen);
    EXPECT_EQ(rebuilt(), "");
    storeLine("e2e4 e7e5 g1f3");
    EXPECT_EQ(rebuilt(), "e2e4 e7e5 g1f3");
    // An upper bound alone has no line.
    play("e2e4 e7e5 g1f3");
    const StateRecord& s = *searchPosition.state;
    storeUpperBound(1, s.hashHigh, s.hashLow, 0, 8, moveOf("b8c6"), s.fiftyMoves, 0);
    while (stackedMoves(searchPosition) > 0) unmakeMove();
    EXPECT_EQ(rebuilt(), "e2e4 e7e5 g1f3");
}

TEST_F(PrincipalVariation, EndsAtAMoveThatCannotBePlayed) {
    setPosition(startPositionFen);
    storeLine("e2e4 e7e5");
    play("e2e4 e7e5");
    const StateRecord& s = *searchPosition.state;
    storeLowerBound(1, s.hashHigh, s.hashLow, 0, 8, makeMoveWord(E1, E3), s.fiftyMoves, 0);
    while (stackedMoves(searchPosition) > 0) unmakeMove();
    EXPECT_EQ(rebuilt(), "e2e4 e7e5");
}

TEST_F(PrincipalVariation, DoesNotRunRoundACircle) {
    setPosition("7k/8/8/8/8/8/8/K7 w - - 0 1");
    storeLine("a1b1 h8g8 b1a1 g8h8");
    EXPECT_EQ(rebuilt(), "a1b1 h8g8 b1a1 g8h8");
}

TEST_F(PrincipalVariation, ReadsThroughALock) {
    setPosition(startPositionFen);
    storeLine("e2e4 e7e5");
    hashTable[searchPosition.state->hashLow & hashMask].entries[0].lock = 1;
    EXPECT_EQ(rebuilt(), "e2e4 e7e5");
}

TEST_F(PrincipalVariation, IsNoLongerThanFortyOneMoves) {
    RandomGame game(startPositionFen, 81);
    std::set<u64> seen;
    while (stackedMoves(searchPosition) < 60) {
        const StateRecord s = *searchPosition.state;
        ASSERT_TRUE(seen.insert(u64{s.hashHigh} << 32 | s.hashLow).second);
        ASSERT_TRUE(game.playMove());
        storeLowerBound(1, s.hashHigh, s.hashLow, 0, 8, searchPosition.state[-1].move, s.fiftyMoves, 0);
    }
    while (stackedMoves(searchPosition) > 0) unmakeMove();
    const std::string line = rebuilt();
    EXPECT_EQ(std::count(line.begin(), line.end(), ' '), 40);
}

}  // namespace
}  // namespace valku
