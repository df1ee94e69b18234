#include "search/time_management.h"

#include <limits>

#include "chess/chess_test.h"
#include "chess/game.h"
#include "search/process_state.h"
#include "search/search_fakes.h"
#include "search/thinking_state.h"

namespace valku {
namespace {

void resetClocks() {
    clockValues.remainingCentiseconds = 0;
    clockValues.levelMoves = 0;
    clockValues.levelMinutes = 5;
    clockValues.levelIncrement = 0;
    clockValues.wtime = clockValues.btime = clockValues.winc = clockValues.binc = clockValues.movestogo = 0;
    clockValues.infiniteSearch = false;
}

class TimeManagement : public ::testing::Test {
  protected:
    void SetUp() override {
        setPosition(startPositionFen);
        resetClocks();
        searchPorts.observer = &observer;
    }
    void TearDown() override {
        resetClocks();
        protocolMode = protocolUndecided;
        searchPorts = {};
    }

    RecordingObserver observer;
};

TEST_F(TimeManagement, UciClocks) {
    protocolMode = protocolUci;
    const struct {
        i32 clockMs, incrementMs, movestogo, moves;
        double schedule, limit;
    } cases[] = {
        {300000, 0, 0, 25, 12.0, 120.0},
        {4000, 0, 1, 5, 0.4, 0.8},           // 0.8 seconds, halved
        {4000, 11, 1, 5, 2.0 / 3, 4.0 / 3},  // a sixth of the clock, for the increment is too large to halve
        {25000, 0, 0, 25, 1.0, 2.0},         // twice the schedule, not 40 percent of the clock
        {30000, 0, 0, 25, 1.2, 2.4},
        {30001, 0, 0, 25, 30.001 / 25, 30.001 * 0.4},
        {25000, 1000, 0, 25, 2.0, 10.0},
        {6000, 1000, 0, 25, 1.0, 2.0},  // 1.24, but a sixth of the clock is less
        {6001, 10, 0, 25, 6.001 / 25 + 0.01, 6.001 * 0.4},
        {60000, 0, 10, 13, 60.0 / 13, 24.0},
        {60000, 0, 25, 25, 2.4, 24.0},
        {60000, 0, 40, 25, 2.4, 24.0},
        {60000, 0, 2, 6, 10.0, 24.0},
        {0, 0, 0, 25, 0.0, 0.0},
    };
    for (const auto& c : cases) {
        for (const Color us : {White, Black}) {
            setPosition(us == White ? "4k3/8/8/8/8/8/8/R3K3 w - - 0 1" : "4k3/8/8/8/8/8/8/R3K3 b - - 0 1");
            resetClocks();
            (us == White ? clockValues.wtime : clockValues.btime) = c.clockMs;
            (us == White ? clockValues.winc : clockValues.binc) = c.incrementMs;
            (us == White ? clockValues.btime : clockValues.wtime) = 777000;
            clockValues.movestogo = c.movestogo;
            const double schedule = scheduleTime();
            EXPECT_NEAR(schedule, c.schedule, 1e-9) << c.clockMs << ' ' << c.movestogo;
            EXPECT_NEAR(hardLimit(schedule), c.limit, 1e-9) << c.clockMs << ' ' << c.movestogo;
            EXPECT_EQ(observer.clockMoves, c.moves);
            EXPECT_NEAR(observer.clockRemaining, c.clockMs / 1000.0, 1e-9);
            EXPECT_NEAR(observer.clockIncrement, c.incrementMs / 1000.0, 1e-9);
        }
    }
    observer.clockMoves = -1;
    clockValues.infiniteSearch = true;
    EXPECT_EQ(scheduleTime(), unlimitedSeconds);
    EXPECT_EQ(hardLimit(unlimitedSeconds), 2 * unlimitedSeconds);
    EXPECT_EQ(observer.clockMoves, -1);
}

TEST_F(TimeManagement, LevelClocks) {
    protocolMode = protocolXboard;
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
        clockValues.remainingCentiseconds = c.centiseconds;
        clockValues.levelMoves = c.moves;
        clockValues.levelMinutes = c.minutes;
        clockValues.levelIncrement = c.increment;
        const double schedule = scheduleTime();
        EXPECT_NEAR(schedule, c.schedule, 1e-9) << c.centiseconds << ' ' << c.moves;
        EXPECT_NEAR(hardLimit(schedule), c.limit, 1e-9) << c.centiseconds << ' ' << c.moves;
    }
    EXPECT_EQ(observer.clockMoves, -1);
}

// The share grows by a hundredth with every full move, also in games that have outgrown the stack.
TEST_F(TimeManagement, LaterMovesMayTakeLonger) {
    protocolMode = protocolConsole;
    clockValues.remainingCentiseconds = 60000;
    constexpr Move round[] = {makeMoveWord(G1, F3), makeMoveWord(G8, F6), makeMoveWord(F3, G1),
                              makeMoveWord(F6, G8)};
    for (int ply = 0; ply < 700; ++ply) {
        const double share = 0.25 + ply / 2 / 100.0;
        const double expected = std::min(100.0, share * 600 / 14);
        ASSERT_NEAR(scheduleTime(), expected, 1e-9) << ply;
        playGameMove(round[ply % 4]);
    }
}

TEST(Minimum, TakesTheSecondWhenTheyDoNotCompare) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(minimum(1, 2), 1);
    EXPECT_EQ(minimum(2, 1), 1);
    EXPECT_EQ(minimum(nan, 3), 3);
}

}  // namespace
}  // namespace valku
