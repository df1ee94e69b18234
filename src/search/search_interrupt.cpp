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
const std::function<void()>* wantedWork =
    nullptr;  // under the mutex; set by the asker, cleared by whoever is first
Event workDone;

// What the work may use, brought back to where the search has left it.
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
    constexpr u32 askAgainMs = 10;  // the start of a search forgets what the word said before
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
