#include "distributed/split_search.h"

#include "distributed/diagnostics.h"
#include "distributed/race.h"
#include "distributed/standard_search_process.h"
#include "platform/format_text.h"
#include "search/search_state.h"

namespace valku {

namespace {

std::string describe(const SearchJob& job, int racers) {
    return formatText(
        "time = %s alpha = %i beta = %i distance = %incount = %i zws = %i ff = %isis = %i "
        "stopSignalOutside() = %i",
        diagnosticTime().c_str(), job.alpha, job.beta, job.distance, job.ncount, job.zws ? 1 : 0, racers,
        isStopWanted() ? 1 : 0, stopSignalOutside() ? 1 : 0);
}

}  // namespace

i32 splitSearch(i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws) {
    static Event anyFinished;
    const RaceCourse course{"splitSearch",       "local",     standardSearchProcess,
                            stopStandardProcess, anyFinished, describe};
    const Position position(searchPosition);
    const RaceResult result = race(course, localClients(), position, {ncount, alpha, beta, distance, zws});
    // The standard process has counted into nodeCount itself.
    nodeCount += result.totalNodes - result.localNodes;
    return result.winner.value;
}

}  // namespace valku
