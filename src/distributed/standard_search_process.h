#pragma once

#include "distributed/search_process.h"
#include "search/search_job.h"

namespace valku {

// The process that searches subtrees in this engine while the thread that handed them out waits. It works on
// searchPosition as it stands. Its result has no line.
class StandardSearchProcess final : public AbstractSearchProcess {
  public:
    StandardSearchProcess() : AbstractSearchProcess(ProcessKind::standard) {}

    void run() override;
    void startSearch(const Position& position, i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws,
                     Event* anyFinished) override;
    void requestStop() override;
    SearchResult* getResult(SearchResult* destination) override;
    i32 getAlpha() const override { return job.alpha; }
    i32 getBeta() const override { return job.beta; }
    bool isIdle() const override { return idle; }
    void prepareSearch() override {}
    void quit() override {}
    std::string name() const override { return "standardSearchProcess"; }

  private:
    Event jobEvent;
    Event* anyFinishedEvent = nullptr;
    SearchJob job;
    SearchResult result;
    SharedFlag idle{true};
};

extern StandardSearchProcess standardSearchProcess;

}  // namespace valku
