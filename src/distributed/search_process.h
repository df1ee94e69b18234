#pragma once

#include <string>

#include "chess/position.h"
#include "platform/event.h"
#include "platform/mutex.h"
#include "platform/shared_value.h"
#include "platform/thread.h"
#include "search/search_types.h"

namespace valku {

enum class ProcessKind { root, standard, localClient, remoteClient };

// Anything that can be handed a position and a window and hands back a SearchResult: a thread of this engine,
// or the proxy of another copy of it. Only one thread of a process searches at any moment; whoever hands a
// job to a search process waits until it is done.
class AbstractSearchProcess : public Thread {
  public:
    explicit AbstractSearchProcess(ProcessKind processKind) : kind(processKind) {}

    // Starts a job. `ncount` is the ply of the node counted from the root, `distance` the remaining depth in
    // quarter plies, `zws` asks for a zero window below `beta`. `anyFinished` is signalled when the job is
    // done, if it is not null; so is doneEvent, which the caller has to reset before.
    virtual void startSearch(const Position& position, i32 ncount, i32 alpha, i32 beta, i32 distance,
                             bool zws, Event* anyFinished) = 0;

    // May be called by any thread; does not wait.
    virtual void requestStop() = 0;

    virtual SearchResult* getResult(SearchResult* result) = 0;
    virtual i32 getAlpha() const = 0;
    virtual i32 getBeta() const = 0;
    virtual bool isIdle() const = 0;

    // A new search of the engine begins.
    virtual void prepareSearch() = 0;
    virtual void quit() = 0;

    // How the console lists it.
    virtual std::string name() const = 0;

    // The caller gives up waiting for the job: the process is in error until its late answer comes. False if
    // the job was completed in this very moment.
    bool giveUp();

    Event doneEvent;
    const ProcessKind kind;
    SharedFlag finished{false};  // a result of the current job is there
    SharedFlag inError{false};   // out of use

  protected:
    // The process's side: its result stands. Wakes whoever waits for it, unless the caller has given up;
    // then the process only leaves its error state, and notes it under the name `recovered`.
    void completeJob(Event* anyFinished, const char* recovered);

  private:
    Mutex endOfJob;  // joins the look at the one flag with the setting of the other
};

}  // namespace valku
