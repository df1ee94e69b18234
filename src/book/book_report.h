#pragma once

#include "book/opening_book.h"

// Reports of what the book holds, to the person at the console.

namespace valku {

// How many moves of each value.
void showBookStats();

// The moves of gamePosition; none if the board holds `aGuess`, the move that is pondered on.
void showBookMoves(bool aGuess);

// The sizes, then the moves of each value.
void reportBookSize();

// Reports how much the book has grown since this was made.
class BookGrowth {
  public:
    void report() const;

  private:
    i32 positionsBefore = bookSize.positions;
    i32 movesBefore = bookSize.moves;
};

}  // namespace valku
