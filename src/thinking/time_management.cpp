#include "thinking/time_management.h"

#include <algorithm>

#include "chess/position.h"
#include "search/process_state.h"
#include "thinking/search_observer.h"
#include "thinking/thinking_state.h"

namespace valku {

ClockValues clockValues;
SharedFlag firstSearchOfGame{true};
i32 factorForAnotherIteration = 150;

namespace {

// The mover's clock as scheduleTime has read it, for the hard limit of the same search.
i32 ownClockMs = 0;
i32 ownIncrementMs = 0;

double scheduleUciTime() {
    const ClockValues& clock = clockValues;
    if (clock.infiniteSearch) return unlimitedSeconds;
    const i32 moves = clock.movestogo == 0 ? 25 : (4 * std::clamp(clock.movestogo, 1, 25) + 25) / 5;
    const bool white = gamePosition.sideToMove == White;
    ownClockMs = white ? clock.wtime : clock.btime;
    ownIncrementMs = white ? clock.winc : clock.binc;
    const double remaining = ownClockMs / 1000.0;
    const double increment = ownIncrementMs / 1000.0;
    double target = remaining / moves + increment;
    if (increment <= 0.01 && remaining <= 5.0) target *= 0.5;
    searchObserver->clockRead(moves, remaining, increment);
    return minimum(target, remaining / 6.0);
}

double scheduleLevelTime() {
    const i32 remaining = clockValues.remainingCentiseconds;
    const i32 increment = clockValues.levelIncrement;
    const i32 levelMoves = clockValues.levelMoves;
    const i32 moves = levelMoves <= 0 || levelMoves > 70 ? 70 : levelMoves;
    const i32 played = (stackedMoves(gamePosition) + droppedGameMoves) / 2;
    const double baseSeconds = clockValues.levelMinutes * 60.0 + clockValues.levelSeconds;
    // Without a base time there is no share of it to speak of: the whole of `perMove` may go.
    const double share = baseSeconds > 0 ? increment * 20.0 / baseSeconds + 0.25 + played / 100.0 : 1.0;
    const double perMove = remaining / (moves * 14.0 / 70.0 * 100.0) + increment;
    double target = minimum(remaining / 600.0, share * perMove);
    if (increment <= 0 && target <= 5.0) target *= 0.5;
    return target;
}

}  // namespace

double minimum(double a, double b) {
    return a < b ? a : b;
}

double scheduleTime() {
    return protocolMode == protocolUci ? scheduleUciTime() : scheduleLevelTime();
}

double hardLimit(double scheduled) {
    if (scheduled == unlimitedSeconds) return 2 * scheduled;
    if (protocolMode == protocolUci) {
        const bool shortOfTime = ownClockMs <= 6000 || (ownIncrementMs == 0 && ownClockMs <= 30000);
        return shortOfTime ? 2 * scheduled : ownClockMs / 2500.0;
    }
    const i32 remaining = clockValues.remainingCentiseconds;
    const bool shortOfTime = remaining <= 600 || (clockValues.levelIncrement == 0 && remaining <= 3000);
    return shortOfTime ? 2 * scheduled : remaining / 150.0;
}

}  // namespace valku
