#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace valku {

// A signal from one thread to another, an auto-reset event: one signal ends one wait. A signal without a
// waiting thread stays pending; pending signals do not add up, so that two of them satisfy one wait.
// A thread that has received the last signal of an event may destroy it at once. Any thread may call.
class Event {
  public:
    void signal();

    // Drops a pending signal.
    void reset();

    void wait();

    // Waits at most `milliseconds`. False if the time ran out; a later signal then stays pending for the next
    // wait.
    bool waitFor(std::uint32_t milliseconds);

  private:
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled = false;
};

}  // namespace valku
