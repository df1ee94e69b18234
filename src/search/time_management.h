#pragma once

#include "chess/types.h"
#include "search/shared_flag.h"

// How long a search may take. Two numbers in seconds: the schedule decides whether another iteration is
// begun; the hard limit stops the search wherever it stands.

namespace valku {

// Read by the thinking thread; written by the commands before they start a search.
struct ClockValues {
    i32 remainingCentiseconds = 0;  // XBoard and console
    i32 levelMoves = 0;             // moves of the control, 0 for sudden death
    i32 levelMinutes = 5;
    i32 levelSeconds = 0;    // of the base time, beside the minutes
    i32 levelIncrement = 0;  // seconds

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
