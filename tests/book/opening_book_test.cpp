#include "book/opening_book.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace valku {
namespace {

// A plain model of the book: lists that are searched from the start and grow at the end.
struct PlainPosition {
    u32 bucket;
    u32 hashHigh;
    std::vector<BookMove> moves;
};

class PlainBook {
  public:
    PlainPosition* find(u32 hashHigh, u32 bucket) {
        const auto place = std::find_if(positions.begin(), positions.end(), [&](const PlainPosition& p) {
            return p.hashHigh == hashHigh && p.bucket == bucket;
        });
        return place == positions.end() ? nullptr : &*place;
    }

    void add(u32 hashHigh, u32 bucket, const BookMove& move) {
        PlainPosition* position = find(hashHigh, bucket);
        if (!position) position = &positions.emplace_back(PlainPosition{bucket, hashHigh, {}});
        for (BookMove& known : position->moves) {
            if (known.from == move.from) {
                known = move;
                return;
            }
        }
        position->moves.push_back(move);
    }

    void remove(u32 hashHigh, u32 bucket, u8 from) {
        if (PlainPosition* position = find(hashHigh, bucket))
            std::erase_if(position->moves, [&](const BookMove& move) { return move.from == from; });
        std::erase_if(positions, [](const PlainPosition& position) { return position.moves.empty(); });
    }

    std::vector<PlainPosition> positions;
};

std::string textOf(u32 bucket, u32 hashHigh, const std::vector<BookMove>& moves) {
    std::string text = std::to_string(bucket) + " " + std::to_string(hashHigh);
    for (const BookMove& move : moves)
        text += " " + std::to_string(move.from) + static_cast<char>(move.value);
    return text;
}

TEST(OpeningBook, KeepsTheOrderThroughAllChanges) {
    PlainBook plain;
    std::mt19937 random(1);
    for (int round = 0; round < 20'000; ++round) {
        const u32 bucket = static_cast<u32>(random() % 3 * 30'000);
        const u32 hashHigh = static_cast<u32>(random() % 2000);
        const BookMove move{static_cast<u8>(random() % 3), 1, 0, static_cast<u8>('a' + random() % 7)};
        if (random() % 4 == 0) {
            removeBookMove(hashHigh, bucket, move);
            plain.remove(hashHigh, bucket, move.from);
        } else {
            addBookMove(hashHigh, bucket, move, Overwrite::always);
            plain.add(hashHigh, bucket, move);
        }
    }
    std::stable_sort(
        plain.positions.begin(), plain.positions.end(),
        [](const PlainPosition& one, const PlainPosition& other) { return one.bucket < other.bucket; });
    std::size_t next = 0;
    forEachBookPosition([&](const BookPosition& position) {
        ASSERT_LT(next, plain.positions.size());
        const PlainPosition& expected = plain.positions[next++];
        const std::string text = textOf(expected.bucket, expected.hashHigh, expected.moves);
        EXPECT_EQ(textOf(position.bucket, position.hashHigh, position.moves), text);
        EXPECT_EQ(textOf(position.bucket, position.hashHigh, bookMoves(position.hashHigh, position.bucket)),
                  text);
    });
    EXPECT_EQ(static_cast<std::size_t>(bookSize.positions), plain.positions.size());
    EXPECT_GT(next, 3000u);
}

}  // namespace
}  // namespace valku
