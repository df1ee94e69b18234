#include "search/move_ordering.h"

#include "search/search_test.h"

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
        const ValueScope bishop(bishopValue, knightValue + 20);
        updatePieceValues();
        EXPECT_EQ(tagOf(pair, "c3e5", -20), 0x30000000 + neutral);
    }
    updatePieceValues();
}

// A good history also lifts a move above the bound below which moves are reduced.
TEST_F(Tags, HistoryIsClippedAndMarkedWhenGood) {
    const i32 cases[][2] = {{0, 0x08080000},        {1, 0x08280001},          {-1, 0x0807FFFF},
                            {0x7FFFF, 0x082FFFFF},  {0x80000, 0x08300000},    {0x7FFFFFFF, 0x08300000},
                            {-0x80000, 0x08000000}, {-0x7FFFFFFF, 0x08000000}};
    for (const auto& [history, tag] : cases) {
        historyTableFor(0).values[WhitePawn][E4] = history;
        EXPECT_EQ(tagOf(startPositionFen, "e2e4"), tag) << history;
        EXPECT_EQ(tag < reducedBelow, history <= 0) << history;
    }
    // Another margin asks another table.
    EXPECT_EQ(tagOf(startPositionFen, "e2e4", 15), 0x08080000);
}

}  // namespace
}  // namespace valku
