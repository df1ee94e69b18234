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

constexpr bool isBookValue(char value) {
    return value >= bestBookValue && value <= worstBookValue;
}

// As the file has it. Castling is the king's move; no mark says so.
struct BookMove {
    u8 from;
    u8 to;
    u8 promotion;  // piece code, 0 if none
    u8 value;      // a letter, 'a' the best
};

// Whether a new value replaces that of a move that is in the book already.
enum class Overwrite { keep = 0, always = 1, ifBetter = 2, ifWorse = 3 };

// How much is in the book. Written by the functions below.
struct BookSize {
    i32 positions = 0;
    i32 moves = 0;
    i32 movesByValue[bookValues] = {};
};

extern BookSize bookSize;

// The moves of a position in the order in which they were added, which the pick depends on. None if the
// position is not in the book.
std::vector<BookMove> bookMoves(u32 hashHigh, u32 hashLow);

// A position of the book with its moves, as long as the visit lasts.
struct BookPosition {
    u16 bucket;  // the low 16 bits of hashLow
    u32 hashHigh;
    const std::vector<BookMove>& moves;
};

// Calls `visit` with every position in the order of the file: by bucket, those of a bucket in the order in
// which they were added.
void forEachBookPosition(const std::function<void(const BookPosition&)>& visit);

// Makes room for about `count` new positions, so that they are added faster, above all in the order of the
// buckets.
void expectBookPositions(std::size_t count);

// Adds a move to a position, which need not be in the book yet.
void addBookMove(u32 hashHigh, u32 hashLow, const BookMove& move, Overwrite overwrite);

// The same with a move of the board. `value` must be a letter of the book.
void addBookMove(const Position& position, Move move, char value, Overwrite overwrite);

// Removes the move, whatever its value, and the position with its last move. False if it is not there.
bool removeBookMove(u32 hashHigh, u32 hashLow, const BookMove& move);

}  // namespace valku
