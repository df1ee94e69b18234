#pragma once

#include <mutex>

namespace valku {

/// A lock between the threads of this process, not recursive. std::lock_guard works on it.
class Mutex {
  public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }

  private:
    std::mutex mutex;
};

}  // namespace valku
