#include "book/opening_book.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace valku {
namespace {

struct PlainPosition {
    u32 hashHigh;
    std::vector<BookMove> moves;
};

std::string textOf(u32 bucket, u32 hashHigh, const std::vector<BookMove>& moves) {
    std::string text = std::to_string(bucket) + " " + std::to_string(hashHigh);
    for (const BookMove& move : moves)
        text += " " + std::to_string(move.from) + static_cast<char>(move.value);
    return text;
}

TEST(OpeningBook, KeepsTheOrderThroughAllChanges) {
    std::map<u32, std::vector<PlainPosition>> plain;  // by bucket; what is new comes to the end of its list
    std::mt19937 random(1);
    for (int round = 0; round < 20'000; ++round) {
        const u32 bucket = static_cast<u32>(random() % 3 * 30'000);
        const u32 hashHigh = static_cast<u32>(random() % 2000);
        const BookMove move{static_cast<u8>(random() % 3), 1, 0, static_cast<u8>('a' + random() % 7)};
        std::vector<PlainPosition>& positions = plain[bucket];
        auto position = std::ranges::find(positions, hashHigh, &PlainPosition::hashHigh);
        const bool isKnown = position != positions.end();
        if (random() % 4 == 0) {
            const bool isRemoved = isKnown && std::erase_if(position->moves, [&](const BookMove& known) {
                                       return known.from == move.from;
                                   });
            if (isRemoved && position->moves.empty()) positions.erase(position);
            EXPECT_EQ(removeBookMove(hashHigh, bucket, move), isRemoved);
        } else {
            addBookMove(hashHigh, bucket, move, Overwrite::always);
            if (!isKnown) position = positions.insert(positions.end(), {hashHigh, {}});
            const auto known = std::ranges::find(position->moves, move.from, &BookMove::from);
            *(known == position->moves.end() ? position->moves.insert(known, move) : known) = move;
        }
    }
    std::vector<std::string> expected, found;
    for (const auto& [bucket, positions] : plain) {
        for (const auto& [hashHigh, moves] : positions) expected.push_back(textOf(bucket, hashHigh, moves));
    }
    forEachBookPosition([&](const BookPosition& position) {
        found.push_back(textOf(position.bucket, position.hashHigh, position.moves));
        EXPECT_EQ(textOf(position.bucket, position.hashHigh, bookMoves(position.hashHigh, position.bucket)),
                  found.back());
    });
    EXPECT_EQ(found, expected);
    EXPECT_EQ(static_cast<std::size_t>(bookSize.positions), expected.size());
    EXPECT_GT(expected.size(), 3000u);
}

}  // namespace
}  // namespace valku
