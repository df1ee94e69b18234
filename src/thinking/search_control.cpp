#include "thinking/search_control.h"

#include <mutex>

#include "chess/game.h"
#include "platform/clock.h"
#include "platform/mutex.h"
#include "search/process_state.h"
#include "search/stop_word.h"
#include "thinking/thinking_state.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

// Joins the test for a running search with the wish to hear of its end, and the end with the test for such a
// wish; and makes the step from one search to the next a single one.
Mutex endOfSearchMutex;

Mutex gameMutex;

// Tells one search from the next, which may begin while somebody waits to stop the one.
SharedNumber searchNumber{0};

// Before anyone can mean the new search with a stop.
void forgetOldStops() {
    clearAllStops();
    abortThinking = false;
    noAutoPonder = false;
    minimalSearchPending = true;
    searchNumber = searchNumber + 1;
}

// Stops the search with that number, or whichever runs; waits until its output is finished.
void halt(const i32* number) {
    {
        const std::lock_guard lock(endOfSearchMutex);
        if (!searchRunning || (number && *number != searchNumber)) return;
        expectSearchEnd();
        setStop(stopFromOutside);
    }
    awaitSearchEnd();
}

SharedFlag tableWorkRunning{false};

constexpr u32 idlePollMs = 20;

// idleEvent can carry a signal of an earlier cycle, so the flag decides. The time limit lets the caller look
// anew at a cycle that has gone over to pondering in the meantime.
void awaitIdle() {
    if (thinkingActive) idleEvent.waitFor(idlePollMs);
}

void nothingToShow() {}

bool hasLimit() {
    if (pondering || analyzing) return false;
    return !(timeControlled && protocolMode == protocolUci && clockValues.infiniteSearch);
}

}  // namespace

void (*ponderingTakenBack)() = nothingToShow;

// Whoever ends the process sets the one flag and looks at the other: one of the two sees it.
bool announceSearch() {
    searchRunning = true;
    if (shutDownBegun) searchRunning = false;
    return searchRunning;
}

// The same two looks.
void workOnTables(void (*work)()) {
    tableWorkRunning = true;
    if (!shutDownBegun) work();
    tableWorkRunning = false;
}

bool areTablesInUse() {
    return searchRunning || tableWorkRunning;
}

void requestSearch() {
    if (processRole != roleRoot) return;  // nobody there to think
    forgetOldStops();
    answerGiven = false;
    if (!announceSearch()) return;
    thinkingActive = true;
    readyForGo = false;
    goEvent.signal();
}

void expectSearchEnd() {
    stopAckEvent.reset();
    stopAckWanted = true;
}

void awaitSearchEnd() {
    stopAckEvent.wait();
    stopAckWanted = false;
}

bool awaitSearchEnd(u32 milliseconds) {
    if (!stopAckEvent.waitFor(milliseconds)) return false;
    stopAckWanted = false;
    return true;
}

void hastenSearchEnd() {
    setStop(stopFromOutside);
}

void haltSearch() {
    halt(nullptr);
}

// A move from outside is let in, by answerGiven, only when the whole state is there.
bool beginPonderSearch(Move expectedReply) {
    const std::lock_guard lock(endOfSearchMutex);
    forgetOldStops();
    changeGame([&] { playGameMove(expectedReply); });
    pondering = true;
    if (!announceSearch()) return false;
    answerGiven = false;
    return true;
}

void acknowledgeSearchEnd() {
    const std::lock_guard lock(endOfSearchMutex);
    minimalSearchPending = false;
    searchRunning = false;
    if (stopAckWanted) stopAckEvent.signal();
}

void changeGame(const std::function<void()>& change) {
    const std::lock_guard lock(gameMutex);
    change();
}

Position copyGame() {
    const std::lock_guard lock(gameMutex);
    return gamePosition;
}

void moveNow() {
    const i32 number = searchNumber;
    const bool takesBack = pondering && protocolMode != protocolUci;
    while (minimalSearchPending && searchNumber == number) sleepMilliseconds(1);
    if (takesBack) {
        stopPondering();
    } else {
        halt(&number);
    }
}

void stopPondering() {
    if (!pondering) return;
    while (thinkingActive) {
        noAutoPonder = true;
        abortThinking = true;
        haltSearch();
        awaitIdle();
    }
    pondering = false;
    if (protocolMode != protocolUci && takeBackGameMove()) ponderingTakenBack();
}

// Outside UCI only stopPondering may clear `pondering`: the thinking thread may just have set it.

void stopThinking() {
    while (thinkingActive) {
        if (pondering && protocolMode != protocolUci) {
            stopPondering();
            return;
        }
        if (protocolMode == protocolUci) pondering = false;
        noAutoPonder = true;
        abortThinking = true;
        haltSearch();
        awaitIdle();
    }
    if (protocolMode != protocolUci) stopPondering();
}

void finishThinking() {
    while (thinkingActive) {
        noAutoPonder = true;
        if (protocolMode == protocolUci) {
            pondering = false;
        } else {
            stopPondering();
        }
        moveNow();
        awaitIdle();
    }
    if (protocolMode != protocolUci) stopPondering();
}

bool isSettled() {
    while (thinkingActive && answerGiven) sleepMilliseconds(1);
    return !thinkingActive;
}

bool isAnswerOpen() {
    return thinkingActive && !answerGiven;
}

void finishAtEndOfInput() {
    while (thinkingActive) {
        noAutoPonder = true;
        if (hasLimit()) {
            awaitIdle();
        } else {
            finishThinking();
        }
    }
}

void endSearchForShutDown() {
    constexpr double patience = 2.0;
    static const double end = steadySeconds() + patience;
    shutDownBegun = true;
    noAutoPonder = true;
    while (areTablesInUse() && steadySeconds() < end) {
        abortThinking = true;
        setStop(stopFromOutside);
        sleepMilliseconds(1);
    }
}

}  // namespace valku
