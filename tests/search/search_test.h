#pragma once

#include "chess/chess_test.h"
#include "eval/eval_tables.h"
#include "search/hash_table.h"
#include "search/history.h"

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

}  // namespace valku
