#include "distributed/split_search.h"

#include <algorithm>

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "distributed/diagnostics.h"
#include "distributed/own_search_processes.h"
#include "distributed/race.h"
#include "platform/format_text.h"
#include "search/search_state.h"
#include "search/upward_calls.h"

namespace valku {

namespace {

constexpr i32 raceDepth = 4 * onePly;
constexpr i32 lateRaceDepth = 3 * onePly - 1;  // after lateSeconds of the search
constexpr double lateSeconds = 1.0;

bool isWorthARace(i32 depth) {
    if (!hasRemoteClients()) return false;
    return depth >= raceDepth || (depth >= lateRaceDepth && elapsedSeconds >= lateSeconds);
}

std::string describeRootRace(const SearchJob& job, int racers) {
    return formatText("time = %s alpha = %i beta = %i depth = %i zws = %i ff = %i stopSignalOutside() = %i",
                      diagnosticTime().c_str(), job.alpha, job.beta, job.distance, job.zws ? 1 : 0, racers,
                      stopSignalOutside() ? 1 : 0);
}

std::string describeRace(const SearchJob& job, int racers) {
    return formatText(
        "time = %s alpha = %i beta = %i distance = %incount = %i zws = %i ff = %isis = %i "
        "stopSignalOutside() = %i",
        diagnosticTime().c_str(), job.alpha, job.beta, job.distance, job.ncount, job.zws ? 1 : 0, racers,
        isStopWanted() ? 1 : 0, stopSignalOutside() ? 1 : 0);
}

// The line of a peer comes without promotion pieces, and from a program that need not be ours: it ends before
// the first move that the board does not allow.
void cutAtFirstIllegalMove(const Position& start, Line& line) {
    Position position(start);
    MoveList list;
    for (Move* move = line.moves; *move; ++move) {
        generateAllMoves(position, list);
        if (std::find(list.moves, list.moves + list.count, *move) == list.moves + list.count ||
            !isLegal(position, *move)) {
            *move = nullMove;
            return;
        }
        makeMove(position, *move);
    }
}

SearchResult searchInline(const Position& position, const SearchJob& job) {
    rootSearchProcess->setJob(position, job, nullptr);
    rootSearchProcess->runRootSearch();
    return rootSearchProcess->getResult();
}

SearchResult raceRootMove(const Position& position, const SearchJob& job) {
    static Event anyFinished;
    const RaceCourse course{"splitRootSearch", "remote",    *rootSearchProcess,
                            stopRootProcess,   anyFinished, describeRootRace};
    RaceResult result = race(course, remoteClients(), position, job);
    result.winner.nodes = result.totalNodes;
    if (result.by != rootSearchProcess.get()) cutAtFirstIllegalMove(position, result.winner.pv);
    return result.winner;
}

}  // namespace

SearchResult splitRootSearch(const Position& position, i32 alpha, i32 beta, i32 depth, bool zws) {
    const SearchJob job{1, alpha, beta, depth, zws};
    return isWorthARace(depth) ? raceRootMove(position, job) : searchInline(position, job);
}

i32 splitSearch(i32 ncount, i32 alpha, i32 beta, i32 distance, bool zws) {
    static Event anyFinished;
    const RaceCourse course{"splitSearch",       "local",     standardSearchProcess,
                            stopStandardProcess, anyFinished, describeRace};
    const Position position(searchPosition);
    const RaceResult result = race(course, localClients(), position, {ncount, alpha, beta, distance, zws});
    // The standard process has counted into nodeCount itself.
    nodeCount += result.totalNodes - result.localNodes;
    return result.winner.value;
}

}  // namespace valku
