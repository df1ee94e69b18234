#pragma once

#include <atomic>

namespace valku {

// A byte that one thread writes and another polls. What the writer did before it set the flag is seen by
// whoever reads the new value; on x86 this costs nothing.
class SharedFlag {
  public:
    constexpr explicit SharedFlag(bool initial) : value(initial) {}

    operator bool() const { return value.load(std::memory_order_acquire); }
    SharedFlag& operator=(bool newValue) {
        value.store(newValue, std::memory_order_release);
        return *this;
    }

  private:
    std::atomic<bool> value;
};

}  // namespace valku
