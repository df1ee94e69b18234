#pragma once

#include "thinking/search_request.h"

// How long a search may take. Two numbers in seconds: the schedule decides whether another iteration is
// begun; the hard limit stops the search wherever it stands.

namespace valku {

constexpr double unlimitedSeconds = 2000000.0;  // a scheduled time that stands for no limit

// What the elapsed time is multiplied by, in percent, in the test for another iteration. A setting.
inline i32 factorForAnotherIteration = 150;

// The schedule of a timed search of gamePosition; unlimitedSeconds for no limit. Reports the UCI clock to the
// observer. Thinking thread, while gamePosition stands still.
double scheduleTime(const SearchRequest& request);

// The hard limit of a search of gamePosition with this schedule.
double hardLimit(const SearchRequest& request, double scheduled);

// The smaller one; `b` if they do not compare.
double minimum(double a, double b);

}  // namespace valku
