#pragma once

#include <string>
#include <vector>

#include "search/search_ports.h"

namespace valku {

// Writes down what a search tells.
class RecordingObserver : public SearchObserver {
  public:
    struct Report {
        i32 depth;
        i32 score;
        Line line;
        bool failHigh;
    };

    void clockRead(i32 moves, double remaining, double increment) override {
        clockMoves = moves;
        clockRemaining = remaining;
        clockIncrement = increment;
    }
    void timeScheduled(double scheduledSeconds, double maxSeconds) override {
        scheduled = scheduledSeconds;
        maximum = maxSeconds;
    }
    void rootMoveBegun(i32, Move, i32, const StateRecord&) override { ++rootMovesBegun; }
    void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) override {
        mainLines.push_back({depth, score, line, failHigh});
    }
    void failedHigh(i32, i32) override { ++failHighs; }
    void failedLow(i32, i32, const Line&) override { ++failLows; }
    void timeRanOut() override {}
    void moveChosen(Move move) override { chosen = move; }
    void moveMade() override { ++movesMade; }

    i32 clockMoves = -1;
    double clockRemaining = -1;
    double clockIncrement = -1;
    double scheduled = -1;
    double maximum = -1;
    int rootMovesBegun = 0;
    std::vector<Report> mainLines;
    int failHighs = 0;
    int failLows = 0;
    Move chosen = nullMove;
    int movesMade = 0;
};

}  // namespace valku
