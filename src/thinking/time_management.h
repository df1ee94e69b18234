#pragma once

#include "chess/types.h"
#include "platform/shared_value.h"

// How long a search may take. Two numbers in seconds: the schedule decides whether another iteration is
// begun; the hard limit stops the search wherever it stands.

namespace valku {

// Read by the thinking thread at the start of a search. The XBoard words may come while it reads; they count
// for the next request at the latest.
struct ClockValues {
    SharedNumber remainingCentiseconds{0};  // XBoard and console
    SharedNumber levelMoves{0};             // moves of the control, 0 for sudden death
    SharedNumber levelMinutes{5};           // the base time is the sum of both
    SharedNumber levelSeconds{0};
    SharedNumber levelIncrement{0};  // seconds

    i32 wtime = 0;  // UCI, milliseconds
    i32 btime = 0;
    i32 winc = 0;
    i32 binc = 0;
    i32 movestogo = 0;  // 0 if not given
    bool infiniteSearch = false;
};

extern ClockValues clockValues;
extern SharedFlag firstSearchOfGame;   // the next timed UCI search takes its time
extern i32 factorForAnotherIteration;  // percent

// The schedule of the position on the board; unlimitedSeconds for no limit. Tells the observer the UCI clock.
double scheduleTime();

// The hard limit of a search with this schedule.
double hardLimit(double scheduled);

// The smaller one; `b` if they do not compare.
double minimum(double a, double b);

}  // namespace valku
