#pragma once

#include <functional>
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

// What becomes of a move that is in the book already.
enum class Overwrite { keep = 0, always = 1, ifBetter = 2, ifWorse = 3 };

// How much is in the book. Written with it.
struct BookSize {
    i32 positions = 0;
    i32 moves = 0;
    i32 movesByValue[bookValues] = {};
};

extern BookSize bookSize;

// The moves of a position in the order of their coming, which is part of the pick. None if the position is
// not in the book.
std::vector<BookMove> bookMoves(u32 hashHigh, u32 hashLow);

// A position of the book with its moves, as long as the visit lasts.
struct BookPosition {
    u16 bucket;  // the low 16 bits of hashLow
    u32 hashHigh;
    const std::vector<BookMove>& moves;
};

// Shows every position in the order of the file: by their buckets, those of a bucket in the order of their
// coming.
void forEachBookPosition(const std::function<void(const BookPosition&)>& visit);

// Makes ready for about so many new positions. They come faster then, above all in the order of the buckets.
void expectBookPositions(std::size_t count);

// `value` must be a letter of the book.
void addBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion, char value, Overwrite overwrite);

// A move of `position`; castling is the king's.
void addBookMove(const Position& position, Move move, char value, Overwrite overwrite);

// Takes the move out, and the position with its last move. Nothing if it is not there.
void removeBookMove(u32 hashHigh, u32 hashLow, u8 from, u8 to, u8 promotion);

}  // namespace valku
