#include "thinking/thinking.h"

#include <algorithm>

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "eval/pawn_table.h"
#include "search/hash_table.h"
#include "search/quiescence.h"
#include "search/search_job.h"
#include "thinking/answer.h"
#include "thinking/iterative_deepening.h"
#include "thinking/main_line.h"
#include "thinking/root_search.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"
#include "thinking/search_observer.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

constexpr i32 timedDepthLimit = 50;  // plies
constexpr double shareOfSingleMove = 0.2;

void prepareTables() {
    const bool cleared = hashReadiness == HashReadiness::cleared;
    prepareSearches();
    if (PreserveHash) return;
    if (!cleared) clearHashTable();
    clearPawnTable();
}

// The result of the first iteration that the loop does not run.
i32 quiesceRoot() {
    searchPosition = rootPosition;
    computeRootMobility();
    return quiescePv(1, -mateScore, mateScore, 0);
}

// A move to play if the search is stopped before its first iteration.
Move findFirstLegalMove() {
    for (i32 i = 0; i < rootMoves.count; ++i) {
        makeMove(rootPosition, rootMoves.moves[i]);
        const bool legal = !leftKingInCheck(rootPosition);
        unmakeMove(rootPosition);
        if (legal) return rootMoves.moves[i];
    }
    return nullMove;
}

void setTimeLimits(DeepeningStart& start, i32 legalMoves) {
    const bool timed = start.scheduled != unlimitedSeconds;
    if (timed && legalMoves == 1) start.scheduled *= shareOfSingleMove;
    start.maxTime = hardLimit(start.request, start.scheduled);
    if (!timed || start.request.gameKeeper == GameKeeper::engine) return;
    if (isFirstSearchOfGame()) start.scheduled *= 2.0;
    searchObserver->timeScheduled(start.scheduled, start.maxTime);
}

void thinkOnce(const SearchRequest& request) {
    if (request.timeControlled) {
        think(timedDepthLimit, scheduleTime(request), request);
    } else {
        think(request.maxDepth, unlimitedSeconds, request);
    }
    workOnTables([] { rootSearchProcess->prepareAhead(); });
}

// If pondering is still set, the last search was a ponder search that was stopped, and its move will be taken
// back.
bool wantsToPonder(const SearchRequest& request) {
    if (request.gameKeeper == GameKeeper::interface || easyMode || noAutoPonder || pondering) return false;
    return mainLine.moves[1] != nullMove;
}

}  // namespace

void think(i32 depthLimit, double scheduledSeconds, const SearchRequest& request) {
    // Step 1. The book.
    if (tryBookMove(request)) {
        acknowledgeSearchEnd();
        return;
    }

    // Step 2. Tables, root moves, and a legal move for the case that nothing is searched.
    beginMainLine();
    prepareTables();
    prepareRootSearch();
    DeepeningStart start{.request = request,
                         .depthLimit = std::clamp(quickPlay > 0 ? quickPlay : depthLimit, 1, maxIterations),
                         .scheduled = scheduledSeconds,
                         .maxTime = 0,
                         .quiescenceScore = quiesceRoot()};
    bestMove = findFirstLegalMove();
    const i32 legalMoves = countLegalMoves(rootPosition, rootMoves);

    // Step 3. The time.
    setTimeLimits(start, legalMoves);
    setTimeUsedUp(false);

    // Step 4. The search and its answer.
    if (legalMoves > 0) {
        deepenIteratively(start);
        setTimeUsedUp(false);
        // The same position; its lists stand as the search leaves them.
        changeGame([] { gamePosition = rootPosition; });
        answerWithBestMove(request);
    } else {
        answerNothing(request);
    }
    acknowledgeSearchEnd();
}

void runThinkingCycle() {
    for (;;) {
        awaitRequest();
        SearchRequest request = takeRequest();
        thinkOnce(request);
        while (wantsToPonder(request) && beginPonderSearch(mainLine.moves[1])) {
            request = takeRequest();
            thinkOnce(request);
        }
        becomeIdle();
    }
}

}  // namespace valku
