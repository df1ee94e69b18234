#include "platform/event.h"

#include <chrono>

namespace valku {

void Event::signal() {
    // The waiter may destroy the event as soon as it gets the lock, so we notify while holding it.
    std::lock_guard guard(mutex);
    signalled = true;
    changed.notify_one();
}

void Event::reset() {
    std::lock_guard guard(mutex);
    signalled = false;
}

void Event::wait() {
    std::unique_lock guard(mutex);
    changed.wait(guard, [this] { return signalled; });
    signalled = false;
}

bool Event::waitFor(std::uint32_t milliseconds) {
    std::unique_lock guard(mutex);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    if (!changed.wait_until(guard, end, [this] { return signalled; })) return false;
    signalled = false;
    return true;
}

}  // namespace valku
