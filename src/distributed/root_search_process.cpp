#include "distributed/root_search_process.h"

#include <string>

#include "distributed/process_lists.h"
#include "eval/pawn_table.h"
#include "search/hash_table.h"
#include "search/stop_word.h"

namespace valku {

std::unique_ptr<RootSearchProcess> rootSearchProcess;

RootSearchProcess::RootSearchProcess(bool shareHash)
    : AbstractSearchProcess(ProcessKind::root), shareHashFlag(shareHash) {
    if (!createHashTable()) throw std::string("Could not map the file! Exiting now...");
    createPawnTable();
}

void RootSearchProcess::run() {
    for (;;) {
        jobEvent.wait();
        runRootSearch();
    }
}

void RootSearchProcess::setJob(const Position& position, const SearchJob& newJob, Event* anyFinished) {
    idle = false;
    searchPosition = position;
    job = newJob;
    job.ncount = 1;
    anyFinishedEvent = anyFinished;
    finished = false;
}

void RootSearchProcess::startSearch(const Position& position, i32 ncount, i32 alpha, i32 beta, i32 distance,
                                    bool zws, Event* anyFinished) {
    setJob(position, {ncount, alpha, beta, distance, zws}, anyFinished);
    if (!threadStarted) start();
    threadStarted = true;
    jobEvent.signal();
}

void RootSearchProcess::requestStop() {
    setStop(stopRootProcess);
}

SearchResult* RootSearchProcess::getResult(SearchResult* destination) {
    *destination = result;
    return destination;
}

// The owner of a table ages it; a process that only shares it does not. A table that nobody has marked needs
// no ageing.
void RootSearchProcess::prepareSearch() {
    const bool marked = hashUsed != 0 || hasLocalClients();
    if (!shareHashFlag && marked) ageHashTable();
    hashUsed = 0;
}

void RootSearchProcess::runRootSearch() {
    idle = false;
    beginJob();
    completeResult(result, runEntry(job, hasLocalClients()));
    completeJob(anyFinishedEvent, "rootSP");
    idle = true;
}

}  // namespace valku
