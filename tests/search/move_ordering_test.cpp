#include "search/move_ordering.h"

#include "chess/chess_test.h"

namespace valku {
namespace {

class Tags : public ::testing::Test {
  protected:
    void SetUp() override {
        clearHistory();
        clearKillers(frame);
    }
    void TearDown() override { clearHistory(); }

    // The tag of one move among all of them.
    i32 tagOf(const char* fen, const char* text, i32 margin = 0, Move hashMove = nullMove) {
        setPosition(fen);
        generateAllMoves(frame.list);
        tagMoves(frame, historyTableFor(margin), margin, hashMove);
        const Move move = moveOf(text);
        const i32 at = static_cast<i32>(
            std::find(frame.list.moves, frame.list.moves + frame.list.count, move) - frame.list.moves);
        return frame.list.scores[at];
    }

    SearchFrame frame{};
};

constexpr i32 neutral = 0x80000;  // what a history of 0 adds

TEST_F(Tags, BasesOfTheCases) {
    const char* pair = "4k3/8/5p2/4n3/8/2B5/8/4K3 w - - 0 1";  // bishop takes knight, pawn takes back: -11
    const char* discovering = "4k3/8/8/8/4N3/p1p5/8/4RK2 w - - 0 1";
    const struct {
        const char* fen;
        const char* move;
        i32 margin, tag;
    } cases[] = {
        {startPositionFen, "e2e4", 0, 0x08000000 + neutral},
        {richPosition, "d5d6", 0, 0 + neutral},  // loses the pawn
        {richPosition, "e2a6", 0, 0x30000000 + 381 + neutral},
        {richPosition, "e2a6", 381, 0x30000000 + 381 + neutral},
        {richPosition, "e2a6", 382, 0x10000000 + neutral},  // not enough to reach beta
        {richPosition, "f3f6", -5000, 0 + neutral},         // a loss is a loss
        {richPosition, "d5e6", 0, 0x30000000 + neutral},
        {richPosition, "d5e6", 1, 0x10000000 + neutral},
        {pair, "c3e5", 0, 0x10000000 + neutral},    // knight and bishop count as even
        {pair, "c3e5", -11, 0x30000000 + neutral},  // a small loss adds nothing
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", 0, 0x08000000 + neutral},  // en passant is quiet
        {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", "a7a8Q", 0, 0x08000000 + neutral},    // and so is queening
        {discovering, "e4g5", 0, 0x0C000000 + neutral},
        {discovering, "e4d6", 0, 0x0C000000 + 0x800000 + neutral},  // a double check
        {discovering, "e4c3", 100, 0x34000000 + 100},               // with a capture that is the whole tag
        {discovering, "e4c3", 101, 0x14000000 + 100},
        {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "a1a8", 0, 0x08000000 + 0x800000 + neutral},
        {"4k3/8/8/8/8/8/8/3QK3 w - - 0 1", "d1d7", 0,
         0 + 0x800000 + neutral},  // a check that loses the queen
    };
    for (const auto& c : cases)
        EXPECT_EQ(tagOf(c.fen, c.move, c.margin), c.tag) << c.fen << ' ' << c.move << ' ' << c.margin;
    EXPECT_EQ(tagOf(richPosition, "e2a6", 0, makeMoveWord(E2, A6)), 0x40000000);
    EXPECT_EQ(tagOf(richPosition, "d5d6", 0, makeMoveWord(D5, D6)), 0x40000000);
    {
        const ValueScope knight(knightValue, bishopValue);
        updatePieceValues();
        EXPECT_EQ(tagOf(pair, "c3e5", -11), 0x30000000 + neutral);  // an even exchange now
    }
    {
        const ValueScope bishop(bishopValue, knightValue + 20);
        updatePieceValues();
        EXPECT_EQ(tagOf(pair, "c3e5", -20), 0x30000000 + neutral);
    }
    updatePieceValues();
}

TEST_F(Tags, KillersAreKnownByManAndDestination) {
    const char* fen = "4k3/8/8/8/8/8/8/RN2KN2 w - - 0 1";
    updateKillers(frame, WhiteKnight, makeMoveWord(F1, D2));
    EXPECT_EQ(tagOf(fen, "f1d2"), 0x08000000 + 0x2000000 + neutral);
    EXPECT_EQ(tagOf(fen, "b1d2"), 0x08000000 + 0x2000000 + neutral);  // from another square
    EXPECT_EQ(tagOf(fen, "e1d2"), 0x08000000 + neutral);              // another man
    updateKillers(frame, WhiteRook, makeMoveWord(A1, A4));
    EXPECT_EQ(tagOf(fen, "a1a4"), 0x08000000 + 0x2000000 + neutral);
    EXPECT_EQ(tagOf(fen, "f1d2"), 0x08000000 + 0x1000000 + neutral);
    updateKillers(frame, WhiteRook, makeMoveWord(A1, A4));  // no second time
    EXPECT_EQ(frame.killer2Move, makeMoveWord(F1, D2));
    EXPECT_EQ(frame.killer2Piece, WhiteKnight);
    clearKillers(frame);
    EXPECT_EQ(tagOf(fen, "a1a4"), 0x08000000 + neutral);
}

TEST_F(Tags, HistoryIsClippedAndMarkedWhenGood) {
    const struct {
        i32 history, tag;
    } cases[] = {{0, 0x08080000},        {1, 0x08280001},          {-1, 0x0807FFFF},
                 {0x7FFFF, 0x082FFFFF},  {0x80000, 0x08300000},    {0x7FFFFFFF, 0x08300000},
                 {-0x80000, 0x08000000}, {-0x7FFFFFFF, 0x08000000}};
    for (const auto& c : cases) {
        historyTableFor(0).values[WhitePawn][E4] = c.history;
        EXPECT_EQ(tagOf(startPositionFen, "e2e4"), c.tag) << c.history;
    }
    // Another margin asks another table.
    EXPECT_EQ(tagOf(startPositionFen, "e2e4", 15), 0x08080000);
}

// A move below this is reduced: what does not lose and is a killer, a check or has a good history is above
// it.
TEST_F(Tags, WhatIsReduced) {
    EXPECT_LT(tagOf(startPositionFen, "e2e4"), reducedBelow);
    historyTableFor(0).values[WhitePawn][E4] = 1;
    EXPECT_GE(tagOf(startPositionFen, "e2e4"), reducedBelow);
    EXPECT_GE(tagOf("4k3/8/8/8/8/8/8/R3K3 w - - 0 1", "a1a8"), reducedBelow);
    EXPECT_LT(tagOf("4k3/8/8/8/8/8/8/3QK3 w - - 0 1", "d1d7"), reducedBelow);
}

TEST(History, TheMarginChoosesTheTable) {
    const struct {
        i32 margin;
        int table;
    } cases[] = {{-5000, 0}, {-31, 0}, {-30, 1}, {-16, 1}, {-15, 2}, {-1, 2},
                 {0, 3},     {14, 3},  {15, 4},  {29, 4},  {30, 5},  {9000, 5}};
    for (const auto& c : cases) EXPECT_EQ(&historyTableFor(c.margin), &historyTables[c.table]) << c.margin;
}

TEST(History, RewardsGoToEasierMarginsAndPenaltiesToHarderOnes) {
    clearHistory();
    const auto values = [] {
        std::vector<i32> column;
        for (const HistoryTable& table : historyTables) column.push_back(table.values[WhiteKnight][F3]);
        return column;
    };
    using Column = std::vector<i32>;
    rewardHistory(historyTables[2], WhiteKnight, F3, 8);
    EXPECT_EQ(values(), (Column{64, 64, 64, 0, 0, 0}));
    penaliseHistory(historyTables[3], WhiteKnight, F3);
    EXPECT_EQ(values(), (Column{64, 64, 64, -4, -2, -1}));
    penaliseHistory(historyTables[0], WhiteKnight, F3);
    EXPECT_EQ(values(), (Column{32, 48, 56, -8, -4, -2}));
    rewardHistory(historyTables[4], WhiteKnight, F3, 7);  // never lowers a value
    EXPECT_EQ(values(), (Column{49, 49, 56, 49, 49, -2}));
    rewardHistory(historyTables[5], WhiteKnight, F3, 4);
    EXPECT_EQ(values(), (Column{49, 49, 56, 49, 49, 16}));
    EXPECT_EQ(historyTables[0].values[WhiteKnight][E5], 0);
    EXPECT_EQ(historyTables[0].values[BlackKnight][F3], 0);
    clearHistory();
    EXPECT_EQ(values(), (Column(6, 0)));
}

MoveList listOf(std::initializer_list<i32> scores) {
    MoveList list{};
    for (const i32 score : scores) {
        list.moves[list.count] = static_cast<Move>(list.count);
        list.scores[list.count++] = score;
    }
    return list;
}

std::vector<int> orderOf(const MoveList& list) {
    return {list.moves, list.moves + list.count};
}

TEST(MoveOrder, SortingIsStableAndSelectionExchanges) {
    MoveList list = listOf({3, 9, 3, 7, 9, 3});
    sortByTag(list);
    EXPECT_EQ(orderOf(list), (std::vector<int>{1, 4, 3, 0, 2, 5}));
    EXPECT_EQ(list.scores[2], 7);

    list = listOf({3, 9, 3, 7, 9, 3});
    for (i32 i = 0; i < list.count; ++i) selectBest(list, i);
    EXPECT_EQ(orderOf(list), (std::vector<int>{1, 4, 3, 2, 0, 5}));  // what was in front went to the back
    list = listOf({1, 1, 2, 2, 3});
    selectBest(list, 0);
    EXPECT_EQ(orderOf(list), (std::vector<int>{4, 1, 2, 3, 0}));
    selectBest(list, 1);
    EXPECT_EQ(orderOf(list), (std::vector<int>{4, 2, 1, 3, 0}));
}

// Figures of an independent model: the stream of random numbers goes on where the keys have left it. The only
// test here that draws.
TEST(MoveOrder, ShufflesAreTheSameInEveryProcess) {
    MoveList list = listOf({0, 10, 20, 30, 40, 50, 60, 70, 80, 90});
    shuffleMoves(list, 0, 9);
    EXPECT_EQ(orderOf(list), (std::vector<int>{0, 3, 7, 2, 9, 5, 1, 6, 8, 4}));
    for (int i = 0; i < 10; ++i) EXPECT_EQ(list.scores[i], 10 * static_cast<i32>(list.moves[i]));
    shuffleMoves(list, 1, 9);
    EXPECT_EQ(orderOf(list), (std::vector<int>{0, 2, 7, 6, 4, 1, 5, 3, 8, 9}));
    shuffleMoves(list, 1, 1);
    shuffleMoves(list, 3, 5);
    EXPECT_EQ(orderOf(list), (std::vector<int>{0, 2, 7, 1, 4, 6, 5, 3, 8, 9}));
}

}  // namespace
}  // namespace valku
