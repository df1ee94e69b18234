#pragma once

#include <memory>

#include "distributed/search_process.h"
#include "search/search_job.h"

namespace valku {

// The process that searches root moves in this engine, and the owner of its tables.
class RootSearchProcess final : public AbstractSearchProcess {
  public:
    // Creates the hash table, or opens the one that the command line has named (`shareHash`), and allocates
    // the pawn table. Failures are thrown as Fault.
    explicit RootSearchProcess(bool shareHash);

    void run() override;
    void startSearch(const Position& position, i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws,
                     Event* anyFinished) override;
    void requestStop() override;
    SearchResult* getResult(SearchResult* destination) override;
    i32 getAlpha() const override { return job.alpha; }
    i32 getBeta() const override { return job.beta; }
    bool isIdle() const override { return idle; }
    void prepareSearch() override;

    // Does the long part of prepareSearch, and the clearing that PreserveHash may ask for, as soon as a
    // search has ended, so that it does not fall on the clock of the next.
    void prepareAhead();

    void quit() override { requestStop(); }
    std::string name() const override { return "rootSearchProcess"; }

    // Runs the job that setJob has left, on the caller's thread.
    void runRootSearch();

    // Takes over a job without waking the thread.
    void setJob(const Position& position, const SearchJob& newJob, Event* anyFinished);

  private:
    void ageTable();

    Event* anyFinishedEvent = nullptr;
    Event jobEvent;
    SearchJob job;
    SearchResult result;
    SharedFlag idle{true};
    const bool shareHashFlag;
};

extern std::unique_ptr<RootSearchProcess> rootSearchProcess;

}  // namespace valku
