#include "book/opening_book.h"

#include <algorithm>

namespace valku {

OpeningBook openingBook;

namespace {

std::vector<BookPosition>& bucketOf(u32 hashLow) {
    return openingBook.buckets[hashLow % OpeningBook::bucketCount];
}

i32& countOf(u8 value) {
    return openingBook.movesByValue[value - bestBookValue];
}

auto findPosition(std::vector<BookPosition>& bucket, u32 hashHigh) {
    return std::find_if(bucket.begin(), bucket.end(),
                        [&](const BookPosition& position) { return position.hashHigh == hashHigh; });
}

auto findMove(std::vector<BookMove>& moves, u8 from, u8 to, u8 promotion) {
    return std::find_if(moves.begin(), moves.end(), [&](const BookMove& move) {
        return move.from == from && move.to == to && move.promotion == promotion;
    });
}

bool isReplaced(u8 oldValue, u8 newValue, Overwrite overwrite) {
    switch (overwrite) {
        case Overwrite::always:
            return true;
        case Overwrite::ifBetter:
            return oldValue > newValue;
        case Overwrite::ifWorse:
            return oldValue < newValue;
        default:
            return false;
    }
}

}  // namespace

const BookPosition* findBookPosition(u32 hashHigh, u32 hashLow) {
    std::vector<BookPosition>& bucket = bucketOf(hashLow);
    const auto position = findPosition(bucket, hashHigh);
    return position == bucket.end() ? nullptr : &*position;
}

void addBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion, char value, Overwrite overwrite) {
    std::vector<BookPosition>& bucket = bucketOf(hashLow);
    auto position = findPosition(bucket, hashHigh);
    if (position == bucket.end()) {
        position = bucket.insert(bucket.end(), BookPosition{hashHigh, {}});
        ++openingBook.positionCount;
    }
    const u8 newValue = static_cast<u8>(value);
    const auto move = findMove(position->moves, from, to, promotion);
    if (move == position->moves.end()) {
        position->moves.push_back({from, to, promotion, newValue});
        ++openingBook.moveCount;
        ++countOf(newValue);
    } else if (isReplaced(move->value, newValue, overwrite)) {
        --countOf(move->value);
        ++countOf(newValue);
        move->value = newValue;
    }
}

void addBookMove(const Position& position, Move move, char value, Overwrite overwrite) {
    addBookMove(position.state->hashHigh, position.state->hashLow, static_cast<u8>(moveFrom(move)),
                static_cast<u8>(moveTo(move)), movePromotion(move), value, overwrite);
}

void removeBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion) {
    std::vector<BookPosition>& bucket = bucketOf(hashLow);
    const auto position = findPosition(bucket, hashHigh);
    if (position == bucket.end()) return;
    const auto move = findMove(position->moves, from, to, promotion);
    if (move == position->moves.end()) return;
    --countOf(move->value);
    --openingBook.moveCount;
    position->moves.erase(move);
    if (!position->moves.empty()) return;
    bucket.erase(position);
    --openingBook.positionCount;
}

}  // namespace valku
