#include "platform/clock.h"

#include <chrono>
#include <thread>

namespace valku {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

TimeOfDay timeOfDay() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t total = duration_cast<milliseconds>(now).count();
    return {total / 1000, static_cast<std::int32_t>(total % 1000) * 1000};
}

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void sleepMilliseconds(std::uint32_t time) {
    std::this_thread::sleep_for(milliseconds(time));
}

}  // namespace valku
