#include "distributed/standard_search_process.h"

#include "search/search_state.h"
#include "search/stop_word.h"

namespace valku {

StandardSearchProcess standardSearchProcess;

void StandardSearchProcess::startSearch(const Position&, i32 ncount, i32 alpha, i32 beta, i32 distance,
                                        bool zws, Event* anyFinished) {
    job = {ncount, alpha, beta, distance, zws};
    idle = false;
    if (!hasThread()) start();
    anyFinishedEvent = anyFinished;
    finished = false;
    jobEvent.signal();
}

void StandardSearchProcess::requestStop() {
    setStop(stopStandardProcess);
}

SearchResult* StandardSearchProcess::getResult(SearchResult* destination) {
    *destination = result;
    return destination;
}

void StandardSearchProcess::run() {
    for (;;) {
        idle = true;
        jobEvent.wait();
        const u64 nodesBefore = nodeCount;
        const i32 probesBefore = tbProbes;
        const i32 hitsBefore = tbHits;
        result.value = runEntry(job, false);
        result.nodes = nodeCount - nodesBefore;
        result.selDepth = selDepth;
        result.tbProbes = tbProbes - probesBefore;
        result.tbHits = tbHits - hitsBefore;
        completeJob(anyFinishedEvent, "SSP");
    }
}

}  // namespace valku
