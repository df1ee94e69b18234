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

    // Starts the thread of the process if it does not run yet; false if there is none to be had. A local
    // racer has it before the first client is entered, for races begin with that. Any thread may call.
    bool hasThread();

    // How the console lists it.
    virtual std::string name() const = 0;

    // The caller goes on without this process, whose stop it has requested: the answer to the job will wake
    // nobody, and no job may be given before it has come. A process that keeps silent for another three
    // seconds is in error until then; `complaint` is what the diagnostic file says of it, behind the time.
    // False if there is nothing to wait for: the job was completed in this very moment, or has failed.
    bool passBy(const std::string& complaint);

    // May it be given a job?
    bool isAvailable() const { return !inError && !passedBy; }

    Event doneEvent;
    const ProcessKind kind;
    SharedFlag finished{false};  // a result of the current job is there
    SharedFlag inError{false};   // out of use; set by the process's own thread

  protected:
    // The process's side: its result stands. Wakes whoever waits for it, unless the caller has gone on; then
    // the process only becomes available again, and notes under the name `recovered` if it was in error.
    void completeJob(Event* anyFinished, const char* recovered);

    // The process's side, while it has no result: puts itself in error once it was passed by for too long.
    void checkPatience();

    SharedFlag threadStarted{false};

  private:
    Mutex threadStart;
    Mutex endOfJob;  // joins the look at the one flag with the setting of the other
    SharedFlag passedBy{false};
    std::string passingComplaint;  // this and the next under the lock
    double patienceEnd = 0;
};

}  // namespace valku
