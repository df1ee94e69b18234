#include "search/search_control.h"

#include <mutex>

#include "chess/game.h"
#include "platform/clock.h"
#include "platform/mutex.h"
#include "search/process_state.h"
#include "search/stop_word.h"
#include "search/thinking_state.h"
#include "search/time_management.h"

namespace valku {

namespace {

// Joins the test for a running search with the wish to hear of its end, and the end with the test for such a
// wish.
Mutex endOfSearchMutex;

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
SharedFlag shutDownBegun{false};

void requestSearch() {
    clearAllStops();
    minimalSearchPending = true;
    answerGiven = false;
    searchRunning = true;
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

void haltSearch() {
    {
        const std::lock_guard lock(endOfSearchMutex);
        if (!searchRunning) return;
        expectSearchEnd();
        setStop(stopFromOutside);
    }
    awaitSearchEnd();
}

void acknowledgeSearchEnd() {
    const std::lock_guard lock(endOfSearchMutex);
    minimalSearchPending = false;
    searchRunning = false;
    if (stopAckWanted) stopAckEvent.signal();
}

void moveNow() {
    while (minimalSearchPending) sleepMilliseconds(1);
    if (pondering && protocolMode != protocolUci) {
        stopPondering();
    } else {
        haltSearch();
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

void stopThinking() {
    while (thinkingActive) {
        if (pondering && protocolMode != protocolUci) {
            stopPondering();
            return;
        }
        pondering = false;
        noAutoPonder = true;
        abortThinking = true;
        haltSearch();
        awaitIdle();
    }
}

void finishThinking() {
    while (thinkingActive) {
        noAutoPonder = true;
        if (protocolMode == protocolUci) pondering = false;
        moveNow();
        awaitIdle();
    }
}

bool isSettled() {
    while (thinkingActive && answerGiven) sleepMilliseconds(1);
    return !thinkingActive;
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
    constexpr int patienceMs = 2000;
    shutDownBegun = true;
    noAutoPonder = true;
    for (int waited = 0; searchRunning && waited < patienceMs; ++waited) {
        abortThinking = true;
        setStop(stopFromOutside);
        sleepMilliseconds(1);
    }
}

}  // namespace valku
