#include "distributed/root_search_process.h"

#include "distributed/process_lists.h"
#include "eval/pawn_table.h"
#include "platform/fault.h"
#include "search/hash_table.h"
#include "search/stop_word.h"

namespace valku {

std::unique_ptr<RootSearchProcess> rootSearchProcess;

RootSearchProcess::RootSearchProcess(bool shareHash)
    : AbstractSearchProcess(ProcessKind::root), shareHashFlag(shareHash) {
    if (!createHashTable()) throw Fault("Could not map the file! Exiting now...");
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
    if (!hasThread()) start();
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
void RootSearchProcess::ageTable() {
    const bool marked = hashUsed != 0 || hasLocalClients();
    if (!shareHashFlag && marked) ageHashTable();
}

void RootSearchProcess::prepareSearch() {
    if (hashReadiness == HashReadiness::none) ageTable();
    hashReadiness = HashReadiness::none;
    hashUsed = 0;
}

// What others may write to the table until the next search begins would not be aged or cleared: other engines
// that share it, or a client that is late with its job.
void RootSearchProcess::prepareAhead() {
    if (shareHashFlag || hashReadiness != HashReadiness::none) return;
    for (const AbstractSearchProcess* const client : localClients()) {
        if (!client->isAvailable()) return;
    }
    if (PreserveHash) {
        ageTable();
        hashReadiness = HashReadiness::aged;
    } else {
        clearHashTable();
        hashReadiness = HashReadiness::cleared;
    }
}

void RootSearchProcess::runRootSearch() {
    idle = false;
    beginJob();
    completeResult(result, runEntry(job, hasLocalClients()));
    completeJob(anyFinishedEvent, "rootSP");
    idle = true;
}

}  // namespace valku
