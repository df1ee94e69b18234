#pragma once

#include "chess/types.h"
#include "platform/event.h"
#include "platform/shared_value.h"
#include "platform/thread.h"

namespace valku {

// Calls a function once, on a thread of its own, when its time has run out. Cancelling and destroying never
// wait longer than the callback runs.
class CallBackTimer final : public Thread {
  public:
    CallBackTimer(u32 interval, void (*function)());
    ~CallBackTimer() override;

    // No call begins after this has returned.
    void cancel();

    void run() override;

  private:
    const u32 intervalMs;
    void (*const callback)();
    SharedFlag active{true};
    Event wakeEvent;
    Event tickDone;
    Event finished;
};

}  // namespace valku
