#pragma once

#include <string>

#include "thinking/search_observer.h"

namespace valku {

// What all protocols share in telling a search: the board on the game's progress, the end of the game,
// resignation.
class SearchOutput : public SearchObserver {
  public:
    void moveMade() override;
    void bookMoveMade(Move move, char value) override;

  protected:
    // The line of the answer itself; the move has been made on gamePosition.
    virtual void sendMove() = 0;

    // The answer of a search with what belongs to it.
    virtual void announceMove() { sendMove(); }

    virtual void announceBookValue(char) {}
};

// The moves of a line in the notation of the console, separated by blanks.
std::string lineText(const Line& line);

// Milliseconds since the search began; the reports count no finer.
u64 elapsedMilliseconds();

// Hits and probes of the endgame tables, as in 3/7.
std::string tablebaseRate();

}  // namespace valku
