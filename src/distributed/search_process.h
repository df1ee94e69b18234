#pragma once

#include <string>

#include "chess/position.h"
#include "platform/event.h"
#include "platform/mutex.h"
#include "platform/shared_value.h"
#include "platform/thread.h"
#include "search/search_job.h"

namespace valku {

enum class ProcessKind { root, standard, localClient, remoteClient };

// Anything that can be given a position and a job and then has a SearchResult: a thread of this engine, or
// the proxy of another copy of it. A process has one job at a time. Whoever gives it one either waits for
// doneEvent before the next, or goes on without the process by `passBy`.
class AbstractSearchProcess : public Thread {
  public:
    explicit AbstractSearchProcess(ProcessKind processKind) : kind(processKind) {}

    // Starts a job. When it is done, doneEvent is signalled, which the caller resets before the call, and
    // `anyFinished`, which may be null. On the thread that hands out the jobs of this process.
    virtual void startSearch(const Position& position, const SearchJob& job, Event* anyFinished) = 0;

    // Does not wait. Any thread.
    virtual void requestStop() = 0;

    // A new search of the engine begins. Between jobs.
    virtual void prepareSearch() {}

    // How the console lists it.
    virtual std::string name() const = 0;

    // Of the last job. It stands from `finished` to the next startSearch.
    const SearchResult& getResult() const { return result; }

    // Starts the thread of the process if it does not run yet; false if the system gives none. Any thread.
    // The racer of this engine gets its thread before the first client is entered, so that no race can fail
    // for want of one.
    bool ensureThread();

    // The caller goes on without this process, whose stop it has requested: the answer to the job wakes
    // nobody, and isAvailable is false until it has come. A process that is silent for another three seconds
    // is in error until then, and the diagnostic file gets the time and `complaint`. Does nothing if the job
    // was completed at this very moment, or has failed.
    void passBy(const std::string& complaint);

    // May it be given a job?
    bool isAvailable() const { return !inError && !passedBy; }

    Event doneEvent;
    const ProcessKind kind;

    // A result of the current job is there. Cleared by startSearch, set by the process's own thread; read by
    // whoever waits.
    SharedFlag finished{false};

    // Out of use. Written by the constructor and by the process's own thread; read by any thread.
    SharedFlag inError{false};

  protected:
    // What every startSearch begins with.
    void takeJob(const SearchJob& newJob, Event* anyFinished);

    // The process's own thread: the result stands. Wakes whoever waits for it, unless the caller has gone on;
    // then the process becomes available again, and notes that under the name `recovered` if it was in error.
    void completeJob(const char* recovered);

    // The process's own thread, while it has no result: puts itself in error once it was passed by for too
    // long.
    void checkPatience();

    // Written by takeJob while the process's own thread waits for jobEvent; read by that thread.
    SearchJob job;
    Event* anyFinishedEvent = nullptr;

    Event jobEvent;
    SearchResult result;  // written by the process's own thread before completeJob

    SharedFlag threadStarted{false};  // under threadStart

  private:
    Mutex threadStart;

    // Joins the look at `finished` with the setting of passedBy, and the other way round.
    Mutex endOfJob;

    SharedFlag passedBy{false};  // set by passBy, cleared by completeJob
    // Written by passBy, read by checkPatience, under endOfJob.
    std::string passingComplaint;
    double patienceEnd = 0;
};

}  // namespace valku
