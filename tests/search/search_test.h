#pragma once

#include <string>
#include <vector>

#include "chess/chess_test.h"
#include "eval/eval_tables.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/search_ports.h"

namespace valku {

// The tables are made once, as the engine does at its start: a second time would draw other keys.
class Tables : public ::testing::Environment {
  public:
    void SetUp() override {
        if (squareMask[0] != 0) return;
        initChessTables();
        initEvalTables();
        linkHistoryTables();
    }
    void TearDown() override { releaseHashTable(); }
};

[[maybe_unused]] inline const auto* const tables = ::testing::AddGlobalTestEnvironment(new Tables);

// Writes down what a search tells.
class RecordingObserver : public SearchObserver {
  public:
    struct Report {
        i32 depth;
        Line line;
        bool failHigh;
    };

    void clockRead(i32 moves, double, double) override { clockMoves = moves; }
    void timeScheduled(double, double) override {}
    void rootMoveBegun(i32, Move, i32, const StateRecord&) override { ++rootMovesBegun; }
    void mainLineFound(i32 depth, i32, const Line& line, bool failHigh) override {
        mainLines.push_back({depth, line, failHigh});
    }
    void failedHigh(i32, i32) override {}
    void failedLow(i32, i32, const Line&) override {}
    void timeRanOut() override {}
    void moveChosen(Move move) override { chosen = move; }
    void moveMade() override {}
    void bookMoveMade(Move, char) override {}

    i32 clockMoves = -1;
    int rootMovesBegun = 0;
    std::vector<Report> mainLines;
    Move chosen = nullMove;
};

}  // namespace valku
