#include "distributed/own_search_processes.h"

#include "distributed/process_lists.h"
#include "eval/pawn_table.h"
#include "platform/fault.h"
#include "search/hash_table.h"
#include "search/search_state.h"
#include "search/stop_word.h"

namespace valku {

RootSearchProcess::RootSearchProcess(bool shareHash)
    : AbstractSearchProcess(ProcessKind::root), shareHashFlag(shareHash) {
    if (!createHashTable()) throw Fault("Could not map the file! Exiting now...");
    createPawnTable();
}

void RootSearchProcess::setJob(const Position& position, const SearchJob& newJob, Event* anyFinished) {
    searchPosition = position;
    takeJob(newJob, anyFinished);
    job.ncount = 1;
}

void RootSearchProcess::startSearch(const Position& position, const SearchJob& newJob, Event* anyFinished) {
    setJob(position, newJob, anyFinished);
    if (!ensureThread()) start();
    jobEvent.signal();
}

void RootSearchProcess::requestStop() {
    setStop(stopRootProcess);
}

void RootSearchProcess::run() {
    for (;;) {
        jobEvent.wait();
        runRootSearch();
    }
}

void RootSearchProcess::runRootSearch() {
    beginJob();
    completeResult(result, runEntry(job, hasLocalClients()));
    completeJob("rootSP");
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

// What others write to the table until the next search begins would not be aged or cleared: other engines
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

void StandardSearchProcess::startSearch(const Position&, const SearchJob& newJob, Event* anyFinished) {
    takeJob(newJob, anyFinished);
    if (!ensureThread()) start();
    jobEvent.signal();
}

void StandardSearchProcess::requestStop() {
    setStop(stopStandardProcess);
}

void StandardSearchProcess::run() {
    for (;;) {
        jobEvent.wait();
        const u64 nodesBefore = nodeCount;
        const i32 probesBefore = tbProbes;
        const i32 hitsBefore = tbHits;
        result.value = runEntry(job, false);
        result.nodes = nodeCount - nodesBefore;
        result.selDepth = selDepth;
        result.tbProbes = tbProbes - probesBefore;
        result.tbHits = tbHits - hitsBefore;
        completeJob("SSP");
    }
}

}  // namespace valku
