#pragma once

#include <mutex>

#include "platform/clock.h"

namespace valku {

// A lock between the threads of this process, not recursive, for std::lock_guard and std::unique_lock.
class Mutex {
  public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    bool try_lock() { return mutex.try_lock(); }

  private:
    std::mutex mutex;
};

// Tries to get the lock for `milliseconds`, for the case that its owner waits for a reader that never reads.
// The result owns the lock or not.
inline std::unique_lock<Mutex> lockWithin(Mutex& mutex, int milliseconds) {
    std::unique_lock lock(mutex, std::try_to_lock);
    for (int waited = 0; !lock && waited < milliseconds; ++waited) {
        sleepMilliseconds(1);
        lock.try_lock();
    }
    return lock;
}

}  // namespace valku
