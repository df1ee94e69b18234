#include "thinking/thinking.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "chess/attacks.h"
#include "chess/game.h"
#include "chess/make_move.h"
#include "distributed/process_lists.h"
#include "distributed/root_search_process.h"
#include "eval/pawn_table.h"
#include "search/hash_table.h"
#include "search/process_state.h"
#include "search/quiescence.h"
#include "search/search_job.h"
#include "search/split_port.h"
#include "search/stop_word.h"
#include "thinking/book_answer.h"
#include "thinking/call_back_timer.h"
#include "thinking/main_line.h"
#include "thinking/root_search.h"
#include "thinking/search_control.h"
#include "thinking/search_observer.h"
#include "thinking/thinking_state.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

constexpr i32 timedDepthLimit = 50;
constexpr i32 minimalDepth = 9;  // a stop waits for this iteration
constexpr double shareOfSingleMove = 0.2;

std::vector<Line> finishedLines;

// The state of one deepening loop.
struct Deepening {
    i32 depthLimit;
    double scheduled;
    double maxTime = 0;
    double baseTimeFactor = 1;
    double timeFactor = 1;
    double extension = 1;  // doubles the schedule behind a fail low, for one test
    i32 scores[maxIterations + 2] = {};
    std::unique_ptr<CallBackTimer> timer{};

    // A search that only ends from outside.
    bool isEndless() const { return pondering || (analyzing && depthLimit == analysisDepth); }

    bool isTimeForMore() const {
        if (scheduled == unlimitedSeconds) return true;
        return (steadySeconds() - startTime) * timeFactor < extension * scheduled;
    }

    void setWindow(i32 depth) const;
    void waitAtDepthLimit() const;
    i32 searchIteration(i32 depth, double& nextExtension);
    void shrinkSchedule(i32 score);
    void judgeStability();
    void run();
};

// Whole seconds, in milliseconds. No limit is longer than that of an unlimited search, and a clock that has
// run out leaves none.
u32 timerInterval(double maxSeconds) {
    return static_cast<u32>(std::clamp(maxSeconds, 0.0, 2 * unlimitedSeconds)) * 1000;
}

void onTimeout() {
    searchObserver->timeRanOut();
    // A ponderhit clears `pondering` and then looks at timeUsedUp; in this order one of the two sees the
    // other.
    timeUsedUp = true;
    if (!pondering) setStop(stopFromOutside);
}

void Deepening::setWindow(i32 depth) const {
    if (depth < 5) {
        aspirationWindow = 25;
        return;
    }
    const i32 earlierStep = std::abs(scores[depth - 2] - scores[depth - 3]);
    const i32 lastStep = std::abs(scores[depth - 1] - scores[depth - 2]);
    aspirationWindow = std::clamp(earlierStep / 2 + lastStep, 20, 30);
}

// At its depth limit an analysis has said what it has to say, and stays on until it is ended. A ponder search
// repeats its last iteration.
void Deepening::waitAtDepthLimit() const {
    minimalSearchPending = false;  // it will get no deeper
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
        if (depth > depthLimit || !isTimeForMore()) {
            timeUsedUp = true;
            if (!isEndless()) return;
        }
        timeFactor = baseTimeFactor;
        double nextExtension = 1.0;
        if (depth > depthLimit) {
            waitAtDepthLimit();
            if (!pondering) return;
            depth = depthLimit;
        }

        // Step 2. The iteration.
        const i32 score = searchIteration(depth, nextExtension);
        scores[depth] = score;
        if (stopSignalOutside()) return;

        // Step 3. What it means for the time.
        if (depth >= 10 && scheduled != unlimitedSeconds) shrinkSchedule(score);
        rememberBestMove(depth, bestMove);
        judgeStability();

        // Step 4. Report it.
        sendMainLine(lastDepth, bestMove, lastScore, mainLine, false);
        finishedLines.push_back(mainLine);
        secondsAtLastReport = steadySeconds() - startTime;

        // Step 5. The hard limit holds from the first finished iteration on: a move stands ready now.
        if (!timer) timer = std::make_unique<CallBackTimer>(timerInterval(maxTime), onTimeout);
        if (depth >= minimalDepth) minimalSearchPending = false;
        extension = nextExtension;
    }
}

// The result of the first iteration that the loop does not run.
i32 quiesceRoot() {
    searchPosition = rootPosition;
    computeRootMobility();
    return quiescePv(1, -mateScore, mateScore, 0);
}

// So that a legal move stands ready, whatever comes later.
Move findFirstLegalMove() {
    for (i32 i = 0; i < rootMoves.count; ++i) {
        makeMove(rootPosition, rootMoves.moves[i]);
        const bool legal = !leftKingInCheck(rootPosition);
        unmakeMove(rootPosition);
        if (legal) return rootMoves.moves[i];
    }
    return nullMove;
}

void prepareTables() {
    const bool cleared = hashReadiness == HashReadiness::cleared;
    prepareSearches();
    if (PreserveHash) return;
    if (!cleared) clearHashTable();
    clearPawnTable();
}

void setTimeLimits(Deepening& deepening, i32 legalMoves) {
    if (deepening.scheduled == unlimitedSeconds) {
        deepening.maxTime = hardLimit(deepening.scheduled);
        return;
    }
    if (legalMoves == 1) deepening.scheduled *= shareOfSingleMove;
    deepening.maxTime = hardLimit(deepening.scheduled);
    if (protocolMode != protocolUci) return;
    if (firstSearchOfGame) {
        firstSearchOfGame = false;
        deepening.scheduled *= 2.0;
    }
    searchObserver->timeScheduled(deepening.scheduled, deepening.maxTime);
}

void playBestMove() {
    answerGiven = true;
    mainLine.moves[0] = bestMove;  // an iteration that was stopped has cleared it
    searchObserver->moveChosen(bestMove);
    changeGame([] { playGameMove(bestMove); });
    searchObserver->moveMade();
}

// The expected reply ends the game. The state stays that of a ponder search until the reply comes or another.
void awaitEndOfPondering() {
    minimalSearchPending = false;
    while (pondering && protocolMode != protocolUci && !searchStopped()) sleepMilliseconds(1);
}

}  // namespace

const Line* findFinishedLine(Move firstMove) {
    const auto line = std::find_if(finishedLines.rbegin(), finishedLines.rend(), [&](const Line& candidate) {
        return candidate.moves[0] == firstMove && candidate.moves[1] != nullMove;
    });
    return line == finishedLines.rend() ? nullptr : &*line;
}

void think(i32 depthLimit, double scheduledSeconds) {
    if (tryBookMove()) {
        acknowledgeSearchEnd();
        return;
    }

    startTime = steadySeconds();
    secondsAtLastReport = 0;
    finishedLines.clear();
    prepareTables();
    prepareRootSearch();
    mainLine = Line{};

    Deepening deepening{.depthLimit = std::clamp(quickPlay > 0 ? quickPlay : depthLimit, 1, maxIterations),
                        .scheduled = scheduledSeconds};
    deepening.scores[1] = quiesceRoot();
    bestMove = findFirstLegalMove();
    const i32 legalMoves = countLegalMoves(rootPosition, rootMoves);
    setTimeLimits(deepening, legalMoves);
    deepening.baseTimeFactor = factorForAnotherIteration / 100.0;
    deepening.timeFactor = deepening.baseTimeFactor;
    timeUsedUp = false;

    if (legalMoves > 0) {
        deepening.run();
        if (deepening.timer) deepening.timer->cancel();
        deepening.timer.reset();
        timeUsedUp = false;
        // The same position; its lists stand as the search leaves them.
        changeGame([] { gamePosition = rootPosition; });
        if (protocolMode == protocolUci || !(pondering || abortThinking)) playBestMove();
    } else {
        awaitEndOfPondering();
        answerGiven = true;  // there is none
    }
    acknowledgeSearchEnd();
}

void runThinkingCycle() {
    for (bool first = true;; first = false) {
        readyForGo = true;
        // A request can be there before the first wait: then the flag is set already and stays.
        if (!first) {
            thinkingActive = false;
            idleEvent.signal();
        }
        goEvent.wait();
        readyForGo = false;

        for (;;) {
            if (timeControlled) {
                think(timedDepthLimit, scheduleTime());
            } else {
                think(maxDepth, unlimitedSeconds);
            }
            workOnTables([] { rootSearchProcess->prepareAhead(); });
            // Behind a ponder search that was stopped, the taking back is still to come.
            if (easyMode || protocolMode == protocolUci || noAutoPonder || pondering) break;
            if (mainLine.moves[1] == nullMove) break;
            if (!beginPonderSearch(mainLine.moves[1])) break;
        }
    }
}

}  // namespace valku
