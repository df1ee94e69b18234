#include <gtest/gtest.h>

#include "chess/tables.h"

namespace valku {
namespace {

// The tables are made once, as the engine does at its start: a second time would draw other keys.
class Tables : public ::testing::Environment {
  public:
    void SetUp() override {
        if (squareMask[0] == 0) initChessTables();
    }
};

[[maybe_unused]] const ::testing::Environment* const tables = ::testing::AddGlobalTestEnvironment(new Tables);

}  // namespace
}  // namespace valku
