#include "distributed/search_job.h"

#include "chess/attacks.h"
#include "distributed/split_search.h"
#include "search/alpha_beta.h"
#include "search/principal_variation.h"
#include "search/root_search.h"
#include "search/search_state.h"

namespace valku {

i32 alphaBetaEntry(i32 ncount, i32 alpha, i32 beta, i32 distance, bool allowSplit) {
    if (!allowSplit || distance < openRaceDepth) return alphaBeta(ncount, alpha, beta, distance);
    if (isTooLateToRace(ncount)) return alphaBetaSplit(ncount, alpha, beta, distance);
    return splitSearch(ncount, alpha, beta, distance, false);
}

i32 alphaBetaZwsEntry(i32 ncount, i32 beta, i32 distance, bool allowSplit) {
    if (distance <= frontierDepth) return frontierZws(ncount, beta);
    if (!allowSplit || distance < zwsRaceDepth) return alphaBetaZws(ncount, beta, distance);
    if (isTooLateToRace(ncount)) return alphaBetaZwsSplit(ncount, beta, distance);
    return splitSearch(ncount, beta - 1, beta, distance, true);
}

i32 runEntry(const SearchJob& job, bool allowSplit) {
    return job.zws ? alphaBetaZwsEntry(job.ncount, job.beta, job.distance, allowSplit)
                   : alphaBetaEntry(job.ncount, job.alpha, job.beta, job.distance, allowSplit);
}

void beginJob() {
    searchFrames[0].inCheck = inCheck();
    nodeCount = 0;
    selDepth = 0;
    tbProbes = 0;
    tbHits = 0;
    clearSearchTables();
}

void completeResult(SearchResult& result, i32 value) {
    result.value = value;
    rebuildPv(searchPosition, result.pv);
    result.nodes = nodeCount;
    result.selDepth = selDepth;
    result.tbProbes = tbProbes;
    result.tbHits = tbHits;
}

}  // namespace valku
