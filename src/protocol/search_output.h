#pragma once

#include <string>

#include "platform/shared_value.h"
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

class XboardOutput final : public SearchOutput {
  public:
    void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) override;
    void moveChosen(Move move) override;

  private:
    void sendMove() override;
    void announceMove() override;
    void announceBookValue(char value) override;
    Move chosenMove = 0;
};

class ConsoleOutput final : public SearchOutput {
  public:
    void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) override;
    void failedHigh(i32 depth, i32 score) override;
    void failedLow(i32 depth, i32 score, const Line& line) override;
    void moveChosen(Move move) override;

  private:
    void sendMove() override;
    void announceBookValue(char value) override;
    Move chosenMove = 0;
};

// The one that speaks the protocol of this process.
SearchObserver* searchOutput();

extern SharedFlag computerOpponent;  // XBoard: kibitz instead of whisper

}  // namespace valku
