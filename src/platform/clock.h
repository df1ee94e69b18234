#pragma once

#include <cstdint>

namespace valku {

// A moment of the wall clock: time since 1 January 1970, UTC. `microseconds` is below 1000000 and a multiple
// of 1000.
struct TimeOfDay {
    std::int64_t seconds = 0;
    std::int32_t microseconds = 0;
};

TimeOfDay timeOfDay();

// Seconds since an arbitrary moment, unaffected by changes of the wall clock. Durations, such as the time
// that a search has used, are measured with it.
double steadySeconds();

void sleepMilliseconds(std::uint32_t milliseconds);

}  // namespace valku
