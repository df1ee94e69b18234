#include "search/principal_variation.h"

#include "search/search_test.h"

namespace valku {
namespace {

void store(Move move) {
    const StateRecord& s = *searchPosition.state;
    storeLowerBound(1, s.hashHigh, s.hashLow, 0, 8, move, s.fiftyMoves, 0);
}

void takeBack() {
    while (stackedMoves(searchPosition) > 0) unmakeMove();
}

std::string rebuilt() {
    Line line{};
    std::fill(line.moves, std::end(line.moves), 99);
    rebuildPv(searchPosition, line);
    std::string text;
    for (int i = 0; line.moves[i]; ++i) text += notation(line.moves[i]) + ' ';
    EXPECT_EQ(stackedMoves(searchPosition), 0);
    return text;
}

TEST(PrincipalVariation, EndsWhereTheTableKnowsNothingGood) {
    setHashBuckets(65536);
    ASSERT_TRUE(createHashTable());
    const std::string line = "e2e4 e7e5 ", circle = "a1b1 h8g8 b1a1 g8h8 ";
    for (const std::string& moves : {line, circle}) {
        setPosition(moves == line ? startPositionFen : "7k/8/8/8/8/8/8/K7 w - - 0 1");
        EXPECT_EQ(rebuilt(), "");
        std::istringstream words(moves);
        for (std::string word; words >> word;) {
            const Move move = moveOf(word);
            store(move);
            makeMove(move);
        }
        takeBack();
        EXPECT_EQ(rebuilt(), moves);  // and not around the circle a second time
    }
    setPosition(startPositionFen);
    HashEntry& first = hashTable[searchPosition.state->hashLow & hashMask].entries[0];
    first.lock = 1;
    EXPECT_EQ(rebuilt(), line);  // reads through a lock
    first.lock = 0;
    play(line);
    store(makeMoveWord(E1, E3));  // cannot be played
    takeBack();
    EXPECT_EQ(rebuilt(), line);

    clearHashTable();
    RandomGame game(startPositionFen, 81);
    while (stackedMoves(searchPosition) < 60) {
        ASSERT_TRUE(game.playMove());
        const Move move = searchPosition.state[-1].move;
        unmakeMove();
        store(move);
        makeMove(move);
    }
    takeBack();
    const std::string longest = rebuilt();
    EXPECT_EQ(std::count(longest.begin(), longest.end(), ' '), 41);
    releaseHashTable();
}

}  // namespace
}  // namespace valku
