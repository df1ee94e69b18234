#pragma once

#include "chess/types.h"

// What a front-end asks of a search. It is filled on the thread that reads the commands, handed to
// requestSearch() and read by the thinking thread only.

namespace valku {

// The clocks of UCI, in milliseconds.
struct UciClock {
    i32 wtime = 0;
    i32 btime = 0;
    i32 winc = 0;
    i32 binc = 0;
    i32 movestogo = 0;  // 0 if not given
};

// The engine's own clock as XBoard and the console tell it.
struct LevelClock {
    i32 remainingCentiseconds = 0;
    i32 levelMoves = 0;    // moves of the control, 0 for sudden death
    i32 levelMinutes = 5;  // the base time is the sum of both
    i32 levelSeconds = 0;
    i32 levelIncrement = 0;  // seconds
};

// Who keeps the game between two searches.
enum class GameKeeper {
    // UCI: the interface sets every position. Every search ends in an answer, and the engine ponders only
    // when
    // it is asked to.
    interface,
    // XBoard and console: the engine plays on its own board. It ponders by itself, with the expected move
    // made,
    // and takes that back if another one comes; a search that is given up says nothing.
    engine,
};

struct SearchRequest {
    bool timeControlled = false;  // time management decides; otherwise maxDepth does
    i32 maxDepth = 10;            // plies
    bool infiniteSearch = false;  // a timed search without a limit
    UciClock uciClock{};          // read if the interface keeps the game,
    LevelClock levelClock{};      // and this one if the engine does
    GameKeeper gameKeeper = GameKeeper::engine;
    bool pondering = false;  // runs on the opponent's time: no time limit ends it
    bool analyzing = false;  // the book is skipped, and the depth limit only makes it wait
};

// maxDepth of an analysis. It does not end there by itself, but waits.
constexpr i32 analysisDepth = 100;

}  // namespace valku
