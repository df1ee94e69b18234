#include <gtest/gtest.h>

#include <functional>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace valku {
namespace {

// Runs one function. Its event is destroyed by the thread that saw the last signal, at once.
struct Worker final : Thread {
    explicit Worker(std::function<void()> task) : body(std::move(task)) { start(); }
    ~Worker() override { finished.wait(); }
    void run() override {
        body();
        finished.signal();
    }

    const std::function<void()> body;
    Event finished;
};

TEST(EventThreadsTest, OneSignalLetsOneWaitPassAndATimeoutTakesNone) {
    Event event;
    event.signal();
    event.signal();
    event.wait();
    const double begin = steadySeconds();
    EXPECT_FALSE(event.waitFor(30));
    EXPECT_GE(steadySeconds() - begin, 0.029);
    event.signal();
    EXPECT_TRUE(event.waitFor(0));
    event.signal();
    event.reset();
    EXPECT_FALSE(event.waitFor(0));

    Event answer;
    Worker worker([&] {
        for (int i = 0; i < 5000; ++i) {
            event.wait();
            answer.signal();
        }
    });
    for (int i = 0; i < 5000; ++i) {
        event.signal();
        EXPECT_TRUE(answer.waitFor(60000));
    }
    for (int i = 0; i < 300; ++i) Worker([] {});
}

// From the top down, so that a shorter stack ends at its guard page.
TEST(ThreadThreadsTest, TheStackHoldsSixMebibytes) {
    Worker([] {
        volatile char frames[6 * 1024 * 1024];
        for (std::size_t i = sizeof frames; i > 0; i -= 4096) frames[i - 1] = 1;
    });
}

}  // namespace
}  // namespace valku
