#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace valku {

/// A signal from one thread to another. It resets itself: one signal lets one wait pass. A signal that nobody
/// waits for stays pending, and signals before a wait do not add up: two of them satisfy one wait.
/// A thread that has seen the last signal of an event may destroy it at once.
class Event {
  public:
    void signal();

    /// Takes a pending signal back.
    void reset();

    void wait();

    /// Waits at most `milliseconds`. True if the event came, false if the time ran out; the event is then
    /// unchanged, and a later signal stays pending for the next wait.
    bool waitFor(std::uint32_t milliseconds);

  private:
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled = false;
};

}  // namespace valku
