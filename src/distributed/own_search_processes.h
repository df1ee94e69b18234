#pragma once

#include <memory>

#include "distributed/search_process.h"

// The two search processes of this engine itself. Both search on searchPosition, the frames and the counters
// of the one search that a process has: whoever gives one of them a job waits until it is done.

namespace valku {

// The process that searches root moves, and the owner of the tables.
class RootSearchProcess final : public AbstractSearchProcess {
  public:
    // Creates the hash table, or opens the one that the command line names (`shareHash`), and allocates the
    // pawn table. Throws Fault.
    explicit RootSearchProcess(bool shareHash);

    // The ply of a job is taken as 1.
    void startSearch(const Position& position, const SearchJob& newJob, Event* anyFinished) override;

    void requestStop() override;

    // Ages the table, if this engine has created it.
    void prepareSearch() override;

    std::string name() const override { return "rootSearchProcess"; }
    void run() override;

    // Does the long part of prepareSearch, and the clearing that PreserveHash may ask for, as soon as a
    // search has ended, so that it does not fall on the clock of the next.
    void prepareAhead();

    // The two parts of startSearch for a caller who searches on a thread of his own: takes over a job without
    // waking the process's thread; and runs it on the caller's.
    void setJob(const Position& position, const SearchJob& newJob, Event* anyFinished);
    void runRootSearch();

  private:
    void ageTable();

    const bool shareHashFlag;
};

// Created by the main thread at start-up, before there is another; never replaced.
inline std::unique_ptr<RootSearchProcess> rootSearchProcess;

// The process that searches subtrees while the thread that handed them out waits. It works on searchPosition
// as it stands. Its result has no line.
class StandardSearchProcess final : public AbstractSearchProcess {
  public:
    StandardSearchProcess() : AbstractSearchProcess(ProcessKind::standard) {}

    // `position` is searchPosition.
    void startSearch(const Position& position, const SearchJob& newJob, Event* anyFinished) override;

    void requestStop() override;
    std::string name() const override { return "standardSearchProcess"; }
    void run() override;
};

inline StandardSearchProcess standardSearchProcess;

}  // namespace valku
