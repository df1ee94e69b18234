#include <gtest/gtest.h>

#include "chess/tables.h"
#include "eval/eval_tables.h"

namespace valku {
namespace {

// The tables are made once, as the engine does at its start.
class Tables : public ::testing::Environment {
  public:
    void SetUp() override {
        if (squareMask[0] == 0) initChessTables();
        initEvalTables();
    }
};

[[maybe_unused]] const ::testing::Environment* const tables = ::testing::AddGlobalTestEnvironment(new Tables);

}  // namespace
}  // namespace valku
