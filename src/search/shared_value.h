#pragma once

#include <atomic>

#include "chess/types.h"

namespace valku {

// A value that one thread writes and another polls. What the writer did before it set the value is seen by
// whoever reads the new one; on x86 this costs nothing.
template <class T>
class SharedValue {
  public:
    constexpr explicit SharedValue(T initial) : value(initial) {}

    operator T() const { return value.load(std::memory_order_acquire); }
    SharedValue& operator=(T newValue) {
        value.store(newValue, std::memory_order_release);
        return *this;
    }

  private:
    std::atomic<T> value;
};

using SharedFlag = SharedValue<bool>;
using SharedNumber = SharedValue<i32>;

}  // namespace valku
