#pragma once

#include <mutex>

#include "platform/clock.h"

namespace valku {

/// A lock between the threads of this process, not recursive. std::lock_guard and std::unique_lock
/// work on it.
class Mutex {
  public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }
    bool try_lock() { return mutex.try_lock(); }

  private:
    std::mutex mutex;
};

/// The lock, if it is to be had within so many milliseconds: whoever holds it may be waiting for a reader
/// that never reads.
inline std::unique_lock<Mutex> lockWithin(Mutex& mutex, int milliseconds) {
    std::unique_lock lock(mutex, std::try_to_lock);
    for (int waited = 0; !lock && waited < milliseconds; ++waited) {
        sleepMilliseconds(1);
        lock.try_lock();
    }
    return lock;
}

}  // namespace valku
