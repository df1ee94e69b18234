#include "search/search_job.h"

#include "chess/attacks.h"
#include "chess/move_generation.h"
#include "eval/evaluate.h"
#include "search/alpha_beta.h"
#include "search/move_ordering.h"
#include "search/principal_variation.h"
#include "search/search_state.h"

namespace valku {

namespace {

void clearSearchTables() {
    computeRootMobility();
    for (int ply = 0; ply < horizonPly + 1; ++ply) clearKillers(searchFrames[ply]);
}

}  // namespace

void computeRootMobility() {
    MoveList list;
    generateCaptures(list, 0);
    const i32 own = list.mobility;
    searchPosition.sideToMove ^= 1;
    generateCaptures(list, 0);
    const i32 other = list.mobility;
    searchPosition.sideToMove ^= 1;
    searchFrames[1].oppMobility = own;
    searchFrames[1].ownMobility = other;
    mobilityBalance = searchPosition.sideToMove == White ? own - other : other - own;
}

void beginJob() {
    searchFrames[0].inCheck = inCheck();
    nodeCount = 0;
    selDepth = 0;
    tbProbes = 0;
    tbHits = 0;
    clearSearchTables();
}

i32 runEntry(const SearchJob& job, bool allowSplit) {
    return job.zws ? alphaBetaZwsEntry(job.ncount, job.beta, job.distance, allowSplit)
                   : alphaBetaEntry(job.ncount, job.alpha, job.beta, job.distance, allowSplit);
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
