#pragma once

#include <cstdint>

namespace valku {

/// A moment of the wall clock: time since 1 January 1970, UTC. `microseconds` is below 1000000 and a multiple
/// of 1000.
struct TimeOfDay {
    std::int64_t seconds = 0;
    std::int32_t microseconds = 0;
};

TimeOfDay timeOfDay();

/// Seconds between two moments, negative if `to` lies before `from`.
double secondsBetween(const TimeOfDay& from, const TimeOfDay& to);

/// Seconds since an arbitrary moment. It never runs backwards when somebody sets the wall clock: the time
/// that a search has used is measured with it.
double steadySeconds();

void sleepMilliseconds(std::uint32_t milliseconds);

}  // namespace valku
