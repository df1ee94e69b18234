#pragma once

#include <vector>

#include "search/search_test.h"
#include "thinking/search_observer.h"

namespace valku {

// Writes down what a search tells.
class RecordingObserver : public SearchObserver {
  public:
    struct Report {
        i32 depth;
        Line line;
        bool failHigh;
    };

    void clockRead(i32 moves, double, double) override { clockMoves = moves; }
    void rootMoveBegun(i32, Move, i32, const StateRecord&) override { ++rootMovesBegun; }
    void mainLineFound(i32 depth, i32, const Line& line, bool failHigh) override {
        mainLines.push_back({depth, line, failHigh});
    }
    void moveChosen(Move move) override { chosen = move; }

    i32 clockMoves = -1;
    int rootMovesBegun = 0;
    std::vector<Report> mainLines;
    Move chosen = nullMove;
};

}  // namespace valku
