#pragma once

#include <string>
#include <string_view>

#include "protocol/search_output.h"

// The UCI front-end (https://www.chessprogramming.org/UCI): the
// interface sets positions and options, and a search in its words. On the thread that reads the commands.

namespace valku {

// Settles on UCI and sends name, author and options.
void sendUciIdentification();

void isReady();

// The text after "setoption name ": a name, and perhaps "value" and a value.
void setOptionCommand(std::string_view text);

// The text after "position ".
void positionCommand(std::string_view text);

// Reads clocks and limits and starts a search. UCI mode only; the engine is idle.
void goUci(std::string_view arguments);

class UciOutput final : public SearchOutput {
  public:
    void clockRead(i32 moves, double remaining, double increment) override;
    void timeScheduled(double scheduledSeconds, double maxSeconds) override;
    void rootMoveBegun(i32 depth, Move move, i32 number, const StateRecord& before) override;
    void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) override;
    void failedLow(i32 depth, i32 score, const Line& line) override;
    void timeRanOut() override;
    void moveChosen(Move move) override;

  private:
    void sendMove() override;
    std::string chosenMove;
};

}  // namespace valku
