#include "thinking/search_control.h"

#include <mutex>

#include "chess/game.h"
#include "distributed/process_role.h"
#include "platform/clock.h"
#include "platform/mutex.h"
#include "platform/shut_down.h"
#include "search/stop_word.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

// Makes three pairs of steps atomic: testing for a running search and asking to be woken at its end, ending
// it and testing for such a request, and going from one search to the next.
Mutex endOfSearchMutex;

Mutex gameMutex;

// What the next search cycle is asked for, and what the running one was. Both under the mutex.
Mutex requestMutex;
SearchRequest nextRequest;
SearchRequest runningRequest;

// Distinguishes a search from the next one, which may begin while another thread waits to stop the first.
SharedNumber searchNumber{0};

// Before a stop can refer to the new search.
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

// idleEvent can carry a signal of an earlier cycle, so the flag decides. The time limit lets the caller test
// again a cycle that has started to ponder in the meantime.
void awaitIdle() {
    if (thinkingActive) idleEvent.waitFor(idlePollMs);
}

void nothingToShow() {}

SearchRequest running() {
    const std::lock_guard lock(requestMutex);
    return runningRequest;
}

// Whether the engine keeps the game, so that a ponder search is taken back.
bool takesBack() {
    const std::lock_guard lock(requestMutex);
    return nextRequest.gameKeeper == GameKeeper::engine;
}

bool hasLimit() {
    const SearchRequest request = running();
    return !pondering && !request.analyzing && !(request.timeControlled && request.infiniteSearch);
}

}  // namespace

void (*ponderingTakenBack)() = nothingToShow;

// The thread that ends the process sets shutDownBegun and then tests searchRunning, this one the other way
// round: at least one of the two sees the other.
bool announceSearch() {
    searchRunning = true;
    if (shutDownBegun) searchRunning = false;
    return searchRunning;
}

// The same order of writing and testing.
void workOnTables(void (*work)()) {
    tableWorkRunning = true;
    if (!shutDownBegun) work();
    tableWorkRunning = false;
}

bool areTablesInUse() {
    return searchRunning || tableWorkRunning;
}

void requestSearch(const SearchRequest& request) {
    if (processRole != roleRoot) return;
    {
        const std::lock_guard lock(requestMutex);
        runningRequest = nextRequest = request;
    }
    pondering = request.pondering;
    forgetOldStops();
    answerGiven = false;
    if (!announceSearch()) return;
    thinkingActive = true;
    readyForGo = false;
    goEvent.signal();
}

void renewLimits(const SearchRequest& request) {
    const std::lock_guard lock(requestMutex);
    nextRequest = request;
}

void awaitRequest() {
    readyForGo = true;
    goEvent.wait();
    readyForGo = false;
}

SearchRequest takeRequest() {
    const std::lock_guard lock(requestMutex);
    return runningRequest = nextRequest;
}

void becomeIdle() {
    readyForGo = true;
    thinkingActive = false;
    idleEvent.signal();
}

void allowStop() {
    minimalSearchPending = false;
}

void setTimeUsedUp(bool used) {
    timeUsedUp = used;
}

// A ponder hit clears `pondering` and then looks at timeUsedUp; in this order one of the two sees the other.
void timeLimitReached() {
    timeUsedUp = true;
    if (!pondering) setStop(stopFromOutside);
}

bool isFirstSearchOfGame() {
    const bool first = firstSearchOfGame;
    if (first) firstSearchOfGame = false;
    return first;
}

void beginNewGame() {
    firstSearchOfGame = true;
}

void beginAnswer() {
    answerGiven = true;
}

void forgoPondering() {
    noAutoPonder = true;
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

// answerGiven is cleared last: it lets moves from outside in, which need the whole state.
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
    const bool giveUp = pondering && takesBack();
    while (minimalSearchPending && searchNumber == number) sleepMilliseconds(1);
    if (giveUp) {
        stopPondering();
    } else {
        halt(&number);
    }
}

void stopSearch() {
    pondering = false;
    moveNow();
}

void ponderHit() {
    pondering = false;
    if (timeUsedUp) moveNow();
}

void forgetPondering() {
    pondering = false;
    timeUsedUp = false;
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
    if (takesBack() && takeBackGameMove()) ponderingTakenBack();
}

// While the engine keeps the game, a stop leaves `pondering` to stopPondering: the thinking thread may just
// have set it, with the expected move on the board.

void stopThinking() {
    while (thinkingActive) {
        if (pondering && takesBack()) {
            stopPondering();
            return;
        }
        if (!takesBack()) pondering = false;
        noAutoPonder = true;
        abortThinking = true;
        haltSearch();
        awaitIdle();
    }
    if (takesBack()) stopPondering();
}

void finishThinking() {
    while (thinkingActive) {
        noAutoPonder = true;
        if (takesBack()) {
            stopPondering();
        } else {
            pondering = false;
        }
        moveNow();
        awaitIdle();
    }
    if (takesBack()) stopPondering();
}

bool isSettled() {
    while (thinkingActive && answerGiven) sleepMilliseconds(1);
    return !thinkingActive;
}

bool isAnswerOpen() {
    return thinkingActive && !answerGiven;
}

void awaitReadiness() {
    while (!searchRunning && !readyForGo) sleepMilliseconds(1);
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
