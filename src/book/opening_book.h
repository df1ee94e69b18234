#pragma once

#include <vector>

#include "chess/position.h"

// The opening book in memory: positions, known by 48 bits of their keys, and their moves. Read by the
// thinking thread and changed by commands only while that thread is idle, so there is no lock.

namespace valku {

constexpr char bestBookValue = 'a';
constexpr char worstBookValue = 'g';
constexpr int bookValues = worstBookValue - bestBookValue + 1;

// Is the character one of the values?
constexpr bool isBookValue(char value) {
    return value >= bestBookValue && value <= worstBookValue;
}

// The four bytes of the file. Castling is the king's move; no mark says so.
struct BookMove {
    u8 from;
    u8 to;
    u8 promotion;  // piece code, 0 if none
    u8 value;      // a letter, 'a' the best
};

// The order of the moves is that of their coming; it is part of the pick and of the file.
struct BookPosition {
    u32 hashHigh;
    std::vector<BookMove> moves;
};

// What becomes of a move that is in the book already.
enum class Overwrite { keep = 0, always = 1, ifBetter = 2, ifWorse = 3 };

struct OpeningBook {
    static constexpr int bucketCount = 65536;

    i32 positionCount = 0;
    i32 moveCount = 0;
    i32 movesByValue[bookValues] = {};
    std::vector<BookPosition> buckets[bucketCount];  // by the low 16 bits of hashLow
};

extern OpeningBook openingBook;

// The position's moves, or null.
const BookPosition* findBookPosition(u32 hashHigh, u32 hashLow);

// `value` must be a letter of the book.
void addBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion, char value, Overwrite overwrite);

// A move of `position`; castling is the king's.
void addBookMove(const Position& position, Move move, char value, Overwrite overwrite);

// Takes the move out, and the position with its last move. Nothing if it is not there.
void removeBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion);

}  // namespace valku
