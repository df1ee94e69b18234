#pragma once

#include <atomic>
#include <cstdint>

namespace valku {

// A value that one thread writes and others poll. Accesses are sequentially consistent: of two threads that
// each set a value and then look at the other's, at least one sees it. Reading costs nothing extra on x86.
template <class T>
class SharedValue {
  public:
    constexpr explicit SharedValue(T initial) : value(initial) {}

    operator T() const { return value.load(); }
    SharedValue& operator=(T newValue) {
        value.store(newValue);
        return *this;
    }

  private:
    std::atomic<T> value;
};

using SharedFlag = SharedValue<bool>;
using SharedNumber = SharedValue<std::int32_t>;

}  // namespace valku
