#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

namespace valku {

// Runs functions of the engine's start-up once, before the first test of a program: a second call of
// initChessTables() would generate other keys.
class StartUp : public ::testing::Environment {
  public:
    using Step = void (*)();

    explicit StartUp(std::initializer_list<Step> steps) : pending_(steps) {}
    void SetUp() override {
        for (const Step step : pending_) step();
        pending_.clear();
    }

  private:
    std::vector<Step> pending_;
};

// Headers that register steps run them in the order in which they include each other.
inline const ::testing::Environment* startUpWith(std::initializer_list<StartUp::Step> steps) {
    return ::testing::AddGlobalTestEnvironment(new StartUp(steps));
}

}  // namespace valku
