#include "search/quiescence.h"

#include <algorithm>

#include "chess/exchange.h"
#include "chess/move_generation.h"
#include "chess/piece_values.h"
#include "search/move_ordering.h"
#include "search/node.h"

namespace valku {

namespace {

constexpr i32 cutDepth = 4;         // a cut in quiescence is worth one ply, so that frontier nodes accept it
constexpr i32 quiescenceDepth = 0;  // other bounds are not
constexpr int lastQuietHashMove = -5;

// With a pawn or none left on the other side every capture may decide the game: nothing is skipped then.
bool opponentHasFewPawns() {
    return (searchPosition.sideToMove == White ? searchPosition.blackPawnCount
                                               : searchPosition.whitePawnCount) < 2;
}

[[gnu::always_inline]] inline i32 victimValue(Move move) {
    return pieceValueByCode[searchPosition.board[moveTo(move)]];
}
[[gnu::always_inline]] inline i32 attackerValue(Move move) {
    return pieceValueByCode[searchPosition.board[moveFrom(move)]];
}

// Drops the captures that do not win `threshold`, raising `best` to what each might have gained at most, and
// tags the rest.
void filterCaptures(MoveList& list, i32 threshold, i32 standPat, i32& best) {
    for (i32 i = 0; i < list.count;) {
        const Move move = list.moves[i];
        prefetchChild(move);
        const i32 gain = exchangeBound(move, threshold);
        if (gain < threshold) {
            best = std::max(best, standPat + gain + maxCompensation);
            list.moves[i] = list.moves[--list.count];
        } else {
            list.scores[i++] = 4 * victimValue(move) - attackerValue(move);
        }
    }
}

}  // namespace

i32 quiesceZws(int ply, i32 beta) {
    if (searchStopped()) return stopValue;
    ++nodeCount;
    if (ply >= horizonPly) return evaluateForSideToMove();
    i32 score;
    if (probeTables(ply, quiescenceDepth, score)) return score;
    setUpFrame(ply);

    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        const i32 lower = scoreFromTable(entry.lowerScore, ply);
        if (lower >= beta) return lower;
        const i32 upper = scoreFromTable(entry.upperScore, ply);
        if (upper < beta) return upper;
    }

    const i32 standPat = evaluateNode(ply);
    if (standPat >= beta) return standPat;
    i32 best = standPat;

    MoveList& list = searchFrames[ply].list;
    i32 threshold = 0;
    if (opponentHasFewPawns()) {
        generateCaptures(list, 0);
    } else {
        threshold = beta - maxCompensation - standPat;
        const i32 leftOut = generateCaptures(list, threshold);
        if (leftOut > 0) best = std::max(best, standPat + leftOut + maxCompensation);
    }
    searchFrames[ply + 1].ownMobility = list.mobility;
    filterCaptures(list, threshold, standPat, best);
    sortByTag(list);

    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        if (!tryMove(move)) continue;
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeMove();
        if (score >= beta) {
            storeNodeLowerBound(ply, score, cutDepth, move);
            return score;
        }
        best = std::max(best, score);
    }
    storeNodeUpperBound(ply, best, quiescenceDepth, nullMove);
    return best;
}

i32 quiescePv(int ply, i32 alpha, i32 beta, int qDepth) {
    if (searchStopped()) return stopValue;
    ++nodeCount;
    if (ply >= horizonPly) return evaluateForSideToMove();
    i32 score;
    if (probeTables(ply, quiescenceDepth, score)) return score;
    setUpFrame(ply);

    i32 best = -mateScore;
    Move bestMove = nullMove;
    Move hashMove = nullMove;
    bool raised = false;
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        const i32 lower = scoreFromTable(entry.lowerScore, ply);
        if (lower >= beta) return lower;
        if (lower >= alpha) {
            alpha = best = lower;
            bestMove = entry.lowerMove;
            raised = true;
        }
        const i32 upper = scoreFromTable(entry.upperScore, ply);
        if (upper <= alpha) return upper;
        if (isPseudoLegal(entry.lowerMove)) hashMove = entry.lowerMove;
    }

    const i32 standPat = evaluateNode(ply);
    if (standPat >= beta) return standPat;
    best = std::max(best, standPat);
    if (standPat > alpha) {
        alpha = standPat;
        raised = true;
    }

    const auto improve = [&](Move move) {
        if (score <= best) return;
        best = score;
        bestMove = move;
        if (score > alpha) {
            alpha = score;
            raised = true;
        }
    };

    if (hashMove) {
        makeMove(hashMove);
        const bool tooDeep = qDepth < lastQuietHashMove && searchPosition.state[-1].captured == empty;
        score = tooDeep || leftKingInCheck() ? -mateScore : -quiescePv(ply + 1, -beta, -alpha, qDepth - 1);
        unmakeMove();
        if (score >= beta) {
            storeNodeLowerBound(ply, score, cutDepth, hashMove);
            return score;
        }
        improve(hashMove);
    }

    MoveList& list = searchFrames[ply].list;
    if (opponentHasFewPawns()) {
        generateCaptures(list, 0);
    } else {
        const i32 leftOut = generateCaptures(list, alpha - standPat - maxCompensation);
        if (leftOut > 0) best = std::max(best, standPat + leftOut + maxCompensation);
    }
    searchFrames[ply + 1].ownMobility = list.mobility;
    for (i32 i = 0; i < list.count; ++i) {
        list.scores[i] = 5 * victimValue(list.moves[i]) - attackerValue(list.moves[i]);
    }

    for (i32 i = 0; i < list.count; ++i) {
        selectBest(list, i);
        const Move move = list.moves[i];
        if (move == hashMove) continue;
        prefetchChild(move);
        makeMove(move);
        score = leftKingInCheck() ? -mateScore : -quiescePv(ply + 1, -beta, -alpha, qDepth - 1);
        unmakeMove();
        if (score >= beta) {
            storeNodeLowerBound(ply, score, cutDepth, move);
            return score;
        }
        improve(move);
    }
    if (raised) {
        storeNodeLowerBound(ply, best, quiescenceDepth, bestMove);
        storeNodeUpperBound(ply, best, quiescenceDepth, bestMove);
    } else {
        storeNodeUpperBound(ply, best, quiescenceDepth, nullMove);
    }
    return best;
}

}  // namespace valku
