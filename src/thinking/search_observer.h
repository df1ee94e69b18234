#pragma once

#include "chess/position.h"
#include "search/search_types.h"

// The reports of a search, on their way up. The observer is set at start-up and never changed.

namespace valku {

// Reports a search in the words of a protocol. The search itself prints nothing. Called on the thinking
// thread, timeRanOut on the timer's thread.
class SearchObserver {
  public:
    virtual ~SearchObserver() = default;

    // A timed search has its schedule: `moves` to go, `remaining` and `increment` in seconds. UCI clocks
    // only.
    virtual void clockRead(i32 /*moves*/, double /*remaining*/, double /*increment*/) {}
    virtual void timeScheduled(double /*scheduledSeconds*/, double /*maxSeconds*/) {}

    // `number` counts the legal root moves begun in this iteration. `before` is the record that the move
    // leaves.
    virtual void rootMoveBegun(i32 /*depth*/, Move, i32 /*number*/, const StateRecord& /*before*/) {}

    // A new main line, the end of an iteration, or (failHigh) a root score that has reached beta.
    virtual void mainLineFound(i32 /*depth*/, i32 /*score*/, const Line&, bool /*failHigh*/) {}
    virtual void failedHigh(i32 /*depth*/, i32 /*score*/) {}
    virtual void failedLow(i32 /*depth*/, i32 /*score*/, const Line&) {}
    virtual void timeRanOut() {}

    // The answer: once before the move is made on gamePosition, once after. moveMade also looks for the end
    // of the game.
    virtual void moveChosen(Move) {}
    virtual void moveMade() {}

    // The answer is a book move instead: after moveChosen and after the move is made on gamePosition. `value`
    // is its letter in the book.
    virtual void bookMoveMade(Move, char /*value*/) {}
};

inline SearchObserver* searchObserver = nullptr;

}  // namespace valku
