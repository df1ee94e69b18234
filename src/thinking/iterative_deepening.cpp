#include "thinking/iterative_deepening.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "platform/clock.h"
#include "search/stop_word.h"
#include "thinking/call_back_timer.h"
#include "thinking/main_line.h"
#include "thinking/root_search.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"
#include "thinking/search_observer.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

constexpr i32 minimalDepth = 9;  // plies; a stop waits for this iteration

void onTimeout() {
    searchObserver->timeRanOut();
    timeLimitReached();
}

// Whole seconds, in milliseconds. No limit is longer than that of an unlimited search, and a clock that has
// run out leaves none.
u32 timerInterval(double maxSeconds) {
    return static_cast<u32>(std::clamp(maxSeconds, 0.0, 2 * unlimitedSeconds)) * 1000;
}

class Deepening {
  public:
    explicit Deepening(const DeepeningStart& begin)
        : start(begin), scheduled(begin.scheduled), timeFactor(baseTimeFactor) {
        scores[1] = begin.quiescenceScore;
    }

    void run();

  private:
    // A search that only ends from outside.
    bool isEndless() const {
        return pondering || (start.request.analyzing && start.depthLimit == analysisDepth);
    }

    bool isTimeForMore() const {
        if (scheduled == unlimitedSeconds) return true;
        return (steadySeconds() - startTime) * timeFactor < extension * scheduled;
    }

    void setWindow(i32 depth) const;
    void waitAtDepthLimit() const;
    i32 searchIteration(i32 depth, double& nextExtension);
    void shrinkSchedule(i32 score);
    void judgeStability();

    const DeepeningStart& start;
    double scheduled;
    const double baseTimeFactor = factorForAnotherIteration / 100.0;
    double timeFactor;
    double extension = 1;  // doubles the schedule after a fail low, for one test
    i32 scores[maxIterations + 2] = {};
    std::unique_ptr<CallBackTimer> timer;
};

// The window is the wider the more the last scores have changed.
void Deepening::setWindow(i32 depth) const {
    if (depth < 5) {
        aspirationWindow = 25;
        return;
    }
    const i32 earlierStep = std::abs(scores[depth - 2] - scores[depth - 3]);
    const i32 lastStep = std::abs(scores[depth - 1] - scores[depth - 2]);
    aspirationWindow = std::clamp(earlierStep / 2 + lastStep, 20, 30);
}

// At its depth limit an analysis waits in silence until it is ended. A ponder search
// repeats its last iteration.
void Deepening::waitAtDepthLimit() const {
    allowStop();  // it will get no deeper
    if (pondering) sleepMilliseconds(100);
    while (isEndless() && !pondering && !searchStopped()) sleepMilliseconds(1);
}

// One iteration, repeated with a lower window as long as it fails low. Fail highs are handled inside.
i32 Deepening::searchIteration(i32 depth, double& nextExtension) {
    setWindow(depth);
    const i32 center = scores[depth - 1];
    i32 alpha = std::max(center - aspirationWindow, -mateScore);
    i32 beta = std::min(center + aspirationWindow, mateScore);
    for (int failLows = 1;; ++failLows) {
        const i32 score = alphaBetaRoot(alpha, beta, depth);
        if (stopSignalOutside() || score > alpha) return score;
        searchObserver->failedLow(depth, score, mainLine);
        nextExtension = 2.0;
        alpha = std::max(center - (aspirationWindow << std::min(failLows, 20)), -mateScore);
        beta = score + 1;
    }
}

// A decided game needs less time.
void Deepening::shrinkSchedule(i32 score) {
    struct Row {
        i32 atLeast;
        double factor;
    };
    constexpr Row rows[] = {{mateThreshold, 0.5}, {1000, 0.85}, {700, 0.9}, {500, 0.95}, {300, 0.97}};
    for (const Row& row : rows) {
        if (std::abs(score) >= row.atLeast) {
            scheduled *= row.factor;
            return;
        }
    }
}

// A best move that took more than a third of the nodes makes a further iteration less likely, one that took
// less makes it more likely.
void Deepening::judgeStability() {
    if (totalNodes == 0) return;
    const double total = static_cast<double>(totalNodes);
    const double firstShare = static_cast<double>(rootNodesOf(rootMoves.moves[0])) / total;
    const double bestShare = static_cast<double>(rootNodesOf(bestMove)) / total;
    if (0.5 * bestShare < firstShare) timeFactor = std::clamp(bestShare / 0.33 * timeFactor, 1.0, 7.0);
}

void Deepening::run() {
    for (i32 depth = 2;; ++depth) {
        // Step 1. Time and depth for another iteration? A ponder search goes on all the same, and an
        // analysis.
        if (depth > start.depthLimit || !isTimeForMore()) {
            setTimeUsedUp(true);
            if (!isEndless()) break;
        }
        timeFactor = baseTimeFactor;
        double nextExtension = 1.0;
        if (depth > start.depthLimit) {
            waitAtDepthLimit();
            if (!pondering) break;
            depth = start.depthLimit;
        }

        // Step 2. The iteration.
        const i32 score = searchIteration(depth, nextExtension);
        scores[depth] = score;
        if (stopSignalOutside()) break;

        // Step 3. What it means for the time.
        if (depth >= 10 && scheduled != unlimitedSeconds) shrinkSchedule(score);
        rememberBestMove(depth, bestMove);
        judgeStability();

        // Step 4. Report it.
        sendMainLine(lastDepth, bestMove, lastScore, mainLine, false);
        rememberFinishedLine();

        // Step 5. The hard limit holds from the first finished iteration on: a move stands ready now.
        if (!timer) timer = std::make_unique<CallBackTimer>(timerInterval(start.maxTime), onTimeout);
        if (depth >= minimalDepth) allowStop();
        extension = nextExtension;
    }
    if (timer) timer->cancel();
}

}  // namespace

void deepenIteratively(const DeepeningStart& start) {
    Deepening(start).run();
}

}  // namespace valku
