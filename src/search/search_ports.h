#pragma once

#include "chess/position.h"
#include "search/search_types.h"

// What a search needs of the parts above it. They are handed in at start-up and never change afterwards.

namespace valku {

// Sees a search from outside and tells the world in the words of its protocol. The search itself prints
// nothing. Called on the thinking thread, timeRanOut on the timer's thread.
class SearchObserver {
  public:
    virtual ~SearchObserver() = default;

    // A timed search has its schedule: `moves` to go, `remaining` and `increment` in seconds. UCI clocks
    // only.
    virtual void clockRead(i32 moves, double remaining, double increment) = 0;
    virtual void timeScheduled(double scheduledSeconds, double maxSeconds) = 0;

    // `number` counts the legal root moves begun in this iteration. `before` is the record that the move
    // leaves.
    virtual void rootMoveBegun(i32 depth, Move move, i32 number, const StateRecord& before) = 0;

    // A new main line, the end of an iteration, or (failHigh) a root score that has reached beta.
    virtual void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) = 0;
    virtual void failedHigh(i32 depth, i32 score) = 0;
    virtual void failedLow(i32 depth, i32 score, const Line& line) = 0;
    virtual void timeRanOut() = 0;

    // The answer: once before the move is made on gamePosition, once after. moveMade also looks for the end
    // of the game.
    virtual void moveChosen(Move move) = 0;
    virtual void moveMade() = 0;

    // The answer is a book move instead: after moveChosen and after the move is made on gamePosition. `value`
    // is its letter in the book.
    virtual void bookMoveMade(Move move, char value) = 0;
};

struct SearchPorts {
    SearchObserver* observer;

    // Tells every search process that a new search begins.
    void (*prepareSearches)();

    // Does ahead what the next search needs of the tables, after a search whose answer is out.
    void (*prepareAhead)();

    // Runs the job of one root move: `position` has the move made; the window, the depth (quarter plies) and
    // the result are from the view of the side to move there.
    SearchResult (*splitRootSearch)(const Position& position, i32 alpha, i32 beta, i32 depth, bool zws);

    // Has the node of searchPosition at `ply` searched by whichever search process is the fastest: scores
    // and depth are those of the node functions. Only called in a process with clients.
    i32 (*splitSearch)(int ply, i32 alpha, i32 beta, i32 depth, bool zws);

    // Plays a move from the opening book; true if that was the whole answer.
    bool (*tryBookMove)();
};

extern SearchPorts searchPorts;

}  // namespace valku
