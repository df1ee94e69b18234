#include "thinking/time_management.h"

#include "chess/game.h"
#include "search/search_test.h"

namespace valku {
namespace {

// There is no observer: only the UCI clock is told to one.
TEST(TimeManagement, LevelClocks) {
    setPosition(startPositionFen);
    const struct {
        i32 centiseconds, moves, minutes, increment;
        double schedule, limit;
    } cases[] = {
        {30000, 0, 5, 0, 0.25 * 300 / 14, 200.0},  // 5.36 seconds
        {12000, 0, 2, 12, 20.0, 80.0},             // a sixth of the clock decides
        {30000, 40, 5, 0, 0.25 * 300 / 8, 200.0},  // 40 moves divide by 8
        {30000, 71, 5, 0, 0.25 * 300 / 14, 200.0},
        {20000, 0, 5, 0, 0.25 * 200 / 14 / 2, 200 / 1.5},  // below five seconds: halved
        {3000, 0, 5, 0, 0.25 * 30 / 14 / 2, 0.25 * 30 / 14},
        {3000, 0, 5, 1, (20.0 / 300 + 0.25) * (30.0 / 14 + 1), 20.0},
        {600, 0, 5, 1, (20.0 / 300 + 0.25) * (6.0 / 14 + 1), 2 * (20.0 / 300 + 0.25) * (6.0 / 14 + 1)},
        {3000, 0, 0, 0, 30.0 / 14 / 2, 30.0 / 14},  // no base time to take a share of
        {0, 0, 5, 0, 0.0, 0.0},
    };
    for (const auto& c : cases) {
        SearchRequest request;
        request.levelClock = {.remainingCentiseconds = c.centiseconds,
                              .levelMoves = c.moves,
                              .levelMinutes = c.minutes,
                              .levelIncrement = c.increment};
        const double schedule = scheduleTime(request);
        EXPECT_NEAR(schedule, c.schedule, 1e-9) << c.centiseconds << ' ' << c.moves;
        EXPECT_NEAR(hardLimit(request, schedule), c.limit, 1e-9) << c.centiseconds << ' ' << c.moves;
    }

    // The share grows by a hundredth with every full move, also in games that have outgrown the stack.
    SearchRequest request;
    request.levelClock.remainingCentiseconds = 60000;
    constexpr Move round[] = {makeMoveWord(G1, F3), makeMoveWord(G8, F6), makeMoveWord(F3, G1),
                              makeMoveWord(F6, G8)};
    for (int ply = 0; ply < 700; ++ply) {
        const double share = 0.25 + ply / 2 / 100.0;
        const double expected = std::min(100.0, share * 600 / 14);
        ASSERT_NEAR(scheduleTime(request), expected, 1e-9) << ply;
        playGameMove(round[ply % 4]);
    }
}

}  // namespace
}  // namespace valku
