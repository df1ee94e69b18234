#pragma once

namespace valku {

// Sets a variable for the length of a scope.
template <class T>
class ValueScope {
  public:
    ValueScope(T& variable, T value) : variable_(variable), old_(variable) { variable = value; }
    ~ValueScope() { variable_ = old_; }
    ValueScope(const ValueScope&) = delete;
    ValueScope& operator=(const ValueScope&) = delete;

  private:
    T& variable_;
    const T old_;
};

}  // namespace valku
