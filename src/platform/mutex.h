#pragma once

#include <mutex>

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

}  // namespace valku
