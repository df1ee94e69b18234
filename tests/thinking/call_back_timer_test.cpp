#include "thinking/call_back_timer.h"

#include <gtest/gtest.h>

#include <atomic>

namespace valku {
namespace {

std::atomic<int> calls;
Event called;

void onTick() {
    ++calls;
    called.signal();
}

TEST(CallBackTimerThreads, FiresOnceUnlessItIsCancelledOrDestroyed) {
    for (int i = 0; i < 200; ++i) {
        CallBackTimer timer(3600 * 1000, onTick);  // in an hour: nobody waits for it
        if (i % 2) timer.cancel();
    }
    EXPECT_EQ(calls, 0);
    for (int i = 1; i <= 50; ++i) {
        CallBackTimer timer(0, onTick);
        called.wait();
        EXPECT_EQ(calls, i);
        if (i % 2) timer.cancel();
    }
    EXPECT_EQ(calls, 50);
}

// Cancelled while it is about to fire: it fires once or not at all, and not after the cancel.
TEST(CallBackTimerThreads, NothingBeginsAfterACancel) {
    for (int i = 0; i < 300; ++i) {
        calls = 0;
        CallBackTimer timer(static_cast<u32>(i % 3), onTick);
        if (i % 2) called.waitFor(1);
        timer.cancel();
        const int atCancel = calls;
        EXPECT_LE(atCancel, 1);
        called.waitFor(i % 100 == 0 ? 5 : 0);
        EXPECT_EQ(calls, atCancel);
    }
}

}  // namespace
}  // namespace valku
