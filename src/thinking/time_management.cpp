#include "thinking/time_management.h"

#include <algorithm>

#include "chess/position.h"
#include "thinking/search_observer.h"

namespace valku {

namespace {

// The UCI clock of the side to move.
struct OwnClock {
    i32 remainingMs;
    i32 incrementMs;
};

OwnClock ownClock(const UciClock& clock) {
    if (gamePosition.sideToMove == White) return {clock.wtime, clock.winc};
    return {clock.btime, clock.binc};
}

double scheduleUciTime(const SearchRequest& request) {
    if (request.infiniteSearch) return unlimitedSeconds;
    const i32 movesToGo = request.uciClock.movestogo;
    const i32 moves = movesToGo == 0 ? 25 : (4 * std::clamp(movesToGo, 1, 25) + 25) / 5;
    const OwnClock own = ownClock(request.uciClock);
    const double remaining = own.remainingMs / 1000.0;
    const double increment = own.incrementMs / 1000.0;
    double target = remaining / moves + increment;
    if (increment <= 0.01 && remaining <= 5.0) target *= 0.5;
    searchObserver->clockRead(moves, remaining, increment);
    return minimum(target, remaining / 6.0);
}

double scheduleLevelTime(const LevelClock& clock) {
    const i32 remaining = clock.remainingCentiseconds;
    const i32 increment = clock.levelIncrement;
    const i32 moves = clock.levelMoves <= 0 || clock.levelMoves > 70 ? 70 : clock.levelMoves;
    const i32 played = (stackedMoves(gamePosition) + droppedGameMoves) / 2;
    const double baseSeconds = clock.levelMinutes * 60.0 + clock.levelSeconds;
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

double scheduleTime(const SearchRequest& request) {
    return request.gameKeeper == GameKeeper::interface ? scheduleUciTime(request)
                                                       : scheduleLevelTime(request.levelClock);
}

double hardLimit(const SearchRequest& request, double scheduled) {
    if (scheduled == unlimitedSeconds) return 2 * scheduled;
    if (request.gameKeeper == GameKeeper::interface) {
        const auto [remaining, increment] = ownClock(request.uciClock);
        const bool shortOfTime = remaining <= 6000 || (increment == 0 && remaining <= 30000);
        return shortOfTime ? 2 * scheduled : remaining / 2500.0;
    }
    const LevelClock& clock = request.levelClock;
    const i32 remaining = clock.remainingCentiseconds;
    const bool shortOfTime = remaining <= 600 || (clock.levelIncrement == 0 && remaining <= 3000);
    return shortOfTime ? 2 * scheduled : remaining / 150.0;
}

}  // namespace valku
