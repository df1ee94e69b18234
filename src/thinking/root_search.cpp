#include "thinking/root_search.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <map>

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "distributed/split_search.h"
#include "eval/evaluate.h"
#include "search/history.h"
#include "search/move_ordering.h"
#include "search/search_job.h"
#include "search/search_state.h"
#include "search/stop_word.h"
#include "thinking/main_line.h"
#include "thinking/search_observer.h"

namespace valku {

Position rootPosition;
MoveList rootMoves;

namespace {

constexpr i32 illegalMoveScore = -mateScore;
constexpr int neverReduced = 3;  // the first moves of the order are searched in full, whatever their history

std::map<Move, u64> rootNodeCounts;
Move bestAtIteration[maxIterations + 1];

// The move that was best most recently leads, and among the rest those that took the most nodes.
i32 rootTag(Move move, i32 depth) {
    i32 tag = 0;
    for (i32 iteration = depth - 1; iteration >= 2; --iteration) {
        if (bestAtIteration[iteration] == move) {
            tag = iteration * 100000;
            break;
        }
    }
    if (totalNodes != 0) tag += static_cast<i32>(1000 * rootNodesOf(move) / totalNodes);
    return tag;
}

void orderRootMoves(i32 depth) {
    i32 tags[maxMoves];
    for (i32 i = 0; i < rootMoves.count; ++i) tags[i] = rootTag(rootMoves.moves[i], depth);
    for (i32 i = 0; i < rootMoves.count; ++i) {
        const auto best = std::max_element(tags + i, tags + rootMoves.count) - tags;
        std::swap(tags[i], tags[best]);
        std::swap(rootMoves.moves[i], rootMoves.moves[best]);
        std::swap(rootMoves.scores[i], rootMoves.scores[best]);
    }
}

Line lineAfter(Move move, const Line& pv) {
    Line line{};
    line.moves[0] = move;
    for (int i = 0; i + 1 < maxLineMoves && pv.moves[i]; ++i) line.moves[i + 1] = pv.moves[i];
    return line;
}

void reportEmptyWindow(i32 alpha, i32 beta, i32 depth) {
    std::ofstream("alphabetaerr", std::ios::app)
        << "alphaBetaRoot time = " << std::time(nullptr) << " alpha = " << alpha << " beta = " << beta
        << " distance = " << depth << '\n';
}

i32 rootStaticEval() {
    searchPosition = rootPosition;
    computeRootMobility();
    const i32 value = evaluate();
    return searchPosition.sideToMove == White ? value : -value;
}

void countOpenWindowJob(const SearchResult& result, Move move) {
    rootNodeCounts[move] += result.nodes;
    totalNodes += result.nodes;
    totalSelDepth = std::max(totalSelDepth, result.selDepth);
    totalTbProbes += static_cast<u32>(result.tbProbes);
    totalTbHits += static_cast<u32>(result.tbHits);
}

}  // namespace

void prepareRootSearch() {
    rootPosition = gamePosition;
    generateAllMoves(rootPosition, rootMoves);
    std::fill(rootMoves.scores, rootMoves.scores + rootMoves.count, 0);
    rootNodeCounts.clear();
    std::fill(std::begin(bestAtIteration), std::end(bestAtIteration), nullMove);
    totalNodes = 0;
    totalSelDepth = 0;
    totalTbProbes = 0;
    totalTbHits = 0;
}

u64 rootNodesOf(Move move) {
    const auto known = rootNodeCounts.find(move);
    return known == rootNodeCounts.end() ? 0 : known->second;
}

void rememberBestMove(i32 depth, Move move) {
    bestAtIteration[depth] = move;
}

i32 alphaBetaRoot(i32 alpha, i32 beta, i32 depth) {
    if (alpha >= beta) reportEmptyWindow(alpha, beta, depth);
    mainLine.moves[0] = nullMove;
    orderRootMoves(depth);
    const HistoryTable& table = historyTableFor(alpha - rootStaticEval());

    i32 legalSeen = 0;
    for (i32 i = 0; i < rootMoves.count; ++i) {
        const Move move = rootMoves.moves[i];

        // Step 1. Make the move.
        makeMove(rootPosition, move);
        if (leftKingInCheck(rootPosition)) {
            unmakeMove(rootPosition);
            rootMoves.scores[i] = illegalMoveScore;
            continue;
        }
        ++legalSeen;
        searchObserver->rootMoveBegun(depth, move, legalSeen, rootPosition.state[-1]);

        // Step 2. Principal variation search: a zero window after the first move, and a late move reduction
        // of a ply for a move with a bad history.
        if (legalSeen > 1 && depth >= 3) {
            const bool badHistory = table.values[rootPosition.board[moveTo(move)]][moveTo(move)] < 0;
            const i32 plies = i > neverReduced && badHistory ? depth - 2 : depth - 1;
            const SearchResult result =
                splitRootSearch(rootPosition, -alpha - 1, -alpha, plies * onePly, true);
            totalNodes += result.nodes;
            if (stopSignalOutside()) {
                unmakeMove(rootPosition);
                return stopValue;
            }
            if (-result.value <= alpha) {
                unmakeMove(rootPosition);
                continue;
            }
        }

        // Step 3. The open window, wider and wider as long as the move fails high.
        for (int failHighs = 0;; ++failHighs) {
            const SearchResult result =
                splitRootSearch(rootPosition, -beta, -alpha, (depth - 1) * onePly, false);
            if (stopSignalOutside()) {
                unmakeMove(rootPosition);
                return stopValue;
            }
            const i32 score = -result.value;
            rootMoves.scores[i] = score;
            countOpenWindowJob(result, move);
            unmakeMove(rootPosition);
            if (score < beta) {
                if (score > alpha) {
                    alpha = score;
                    sendMainLine(depth, move, score, lineAfter(move, result.pv), false);
                }
                break;
            }
            searchObserver->failedHigh(depth, score);
            sendMainLine(depth, move, score, lineAfter(move, result.pv), true);
            alpha = score - 1;
            beta = std::min(alpha + (aspirationWindow << std::min(failHighs, 20)), mateScore);
            makeMove(rootPosition, move);
        }
    }
    return alpha;
}

}  // namespace valku
