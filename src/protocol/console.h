#pragma once

#include <string_view>

#include "protocol/search_output.h"

// The front-end for a person at a terminal: the board, and a search in plain words.

namespace valku {

// Shows gamePosition to the person; nothing in the other protocols.
void printBoard();

// The commands for which an interface has no use. On the thread that reads the commands.
void fenCommand(std::string_view fen);
void mirror();
void showEvaluation();

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

}  // namespace valku
