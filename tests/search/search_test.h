#pragma once

#include "chess/chess_test.h"
#include "eval/eval_tables.h"
#include "search/hash_table.h"
#include "search/history.h"

namespace valku {

[[maybe_unused]] inline const auto* const searchTables = startUpWith({initEvalTables, linkHistoryTables});

// The hash table is shared memory: the last test leaves none behind.
class HashTableRelease : public ::testing::Environment {
  public:
    void TearDown() override { releaseHashTable(); }
};

[[maybe_unused]] inline const auto* const hashTableRelease =
    ::testing::AddGlobalTestEnvironment(new HashTableRelease);

}  // namespace valku
