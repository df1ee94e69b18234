#pragma once

#include "book/opening_book.h"

// What the book holds, told to the person at the console.

namespace valku {

// How many moves of each value.
void showBookStats();

// The moves of gamePosition; none unless `onMove`, since the board may hold a guess.
void showBookMoves(bool onMove);

// The sizes, then the moves of each value.
void reportBookSize();

// Remembers the book's size when it is made, and reports what has come since.
class BookGrowth {
  public:
    void report() const;

  private:
    i32 positionsBefore = bookSize.positions;
    i32 movesBefore = bookSize.moves;
};

}  // namespace valku
