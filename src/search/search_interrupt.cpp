#include "search/search_interrupt.h"

#include <mutex>

#include "chess/position.h"
#include "eval/evaluate.h"
#include "platform/event.h"
#include "platform/mutex.h"
#include "search/search_state.h"
#include "search/stop_word.h"

namespace valku {

namespace {

Mutex workMutex;
// Under the mutex. Set by the command thread; cleared by the searching thread when the work is done, or by
// the command thread when it gives up.
const std::function<void()>* wantedWork = nullptr;
Event workDone;

// Saves what the work may use and restores it at the end.
class SuspendedNode {
  public:
    SuspendedNode()
        : position(searchPosition),
          balance(mobilityBalance),
          ownMobility(searchFrames[1].ownMobility),
          oppMobility(searchFrames[1].oppMobility) {}
    SuspendedNode(const SuspendedNode&) = delete;
    SuspendedNode& operator=(const SuspendedNode&) = delete;
    ~SuspendedNode() {
        searchPosition = position;
        mobilityBalance = balance;
        searchFrames[1].ownMobility = ownMobility;
        searchFrames[1].oppMobility = oppMobility;
    }

  private:
    const Position position;
    const i32 balance;
    const i32 ownMobility;
    const i32 oppMobility;
};

}  // namespace

void serveInterrupt() {
    stopWord.fetch_and(~searchInterrupt, std::memory_order_acq_rel);
    const std::lock_guard lock(workMutex);
    if (!wantedWork) return;
    const SuspendedNode node;
    (*wantedWork)();
    wantedWork = nullptr;
    workDone.signal();
}

bool doBetweenNodes(const std::function<void()>& work, bool (*isSearching)()) {
    constexpr u32 askAgainMs = 10;  // a search that starts clears the stop word, and the request with it
    workDone.reset();
    {
        const std::lock_guard lock(workMutex);
        wantedWork = &work;
    }
    while (isSearching()) {
        stopWord.fetch_or(searchInterrupt, std::memory_order_acq_rel);
        if (workDone.waitFor(askAgainMs)) return true;
    }
    const std::lock_guard lock(workMutex);
    const bool done = wantedWork == nullptr;
    wantedWork = nullptr;
    return done;
}

}  // namespace valku
