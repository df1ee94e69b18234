#include "search/quiescence.h"

#include <algorithm>

#include "chess/exchange.h"
#include "chess/move_generation.h"
#include "search/move_ordering.h"
#include "search/node.h"

namespace valku {

namespace {

constexpr i32 cutDepth = onePly;       // of a stored cut, so that frontier nodes accept it
constexpr i32 quiescenceDepth = 0;     // of all other bounds
constexpr int lastQuietHashMove = -5;  // `qDepth`

// With at most one pawn left on the other side every capture may decide the game.
bool opponentHasFewPawns() {
    return (searchPosition.sideToMove == White ? searchPosition.blackPawnCount
                                               : searchPosition.whitePawnCount) < 2;
}

// Delta pruning (https://www.chessprogramming.org/Delta_Pruning): generates the captures that could lift the
// score to `bound`, and raises `best` to what the best of the others could have reached. Returns the gain
// that a capture needs, in hundredths of a pawn.
[[gnu::always_inline]] inline i32 generateByDelta(int ply, i32 bound, i32 standPat, i32& best) {
    MoveList& list = searchFrames[ply].list;
    const i32 threshold = opponentHasFewPawns() ? 0 : bound - standPat - maxCompensation;
    const i32 leftOut = generateCaptures(list, threshold);
    if (leftOut > 0) best = std::max(best, standPat + leftOut + maxCompensation);
    searchFrames[ply + 1].ownMobility = list.mobility;
    return threshold;
}

// Drops the captures whose static exchange evaluation is below `threshold`, raising `best` to what each might
// have gained at most, and tags the rest by MVV/LVA.
void filterCaptures(MoveList& list, i32 threshold, i32 standPat, i32& best) {
    for (i32 i = 0; i < list.count;) {
        const Move move = list.moves[i];
        prefetchChild(move);
        const i32 gain = exchangeBound(move, threshold);
        if (gain < threshold) {
            best = std::max(best, standPat + gain + maxCompensation);
            list.moves[i] = list.moves[--list.count];
        } else {
            list.scores[i++] = mvvLva(move, 4);
        }
    }
}

}  // namespace

i32 quiesceZws(int ply, i32 beta) {
    // Step 1. Stop and horizon.
    if (searchStopped()) return stopValue;
    ++nodeCount;
    if (ply >= horizonPly) return evaluateForSideToMove();

    // Step 2. Endgame tables.
    i32 score;
    if (probeTables(ply, quiescenceDepth, score)) return score;
    setUpFrame(ply);

    // Step 3. Transposition table.
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        if (cutsZws(entry, ply, beta, quiescenceDepth, score)) return score;
    }

    // Step 4. Stand pat.
    const i32 standPat = evaluateNode(ply);
    if (standPat >= beta) return standPat;
    i32 best = standPat;

    // Step 6. Captures that pass delta pruning and the static exchange evaluation.
    MoveList& list = searchFrames[ply].list;
    const i32 threshold = generateByDelta(ply, beta, standPat, best);
    filterCaptures(list, threshold, standPat, best);
    sortByTag(list);

    for (i32 i = 0; i < list.count; ++i) {
        // Step 7. Make the move.
        const Move move = list.moves[i];
        if (!tryMove(move)) continue;

        // Step 9. Search the child.
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeMove();

        // Step 10. A beta cut.
        if (score >= beta) {
            storeNodeLowerBound(ply, score, cutDepth, move);
            return score;
        }

        // Step 11. A fail-low.
        best = std::max(best, score);
    }

    // Step 12. An upper bound.
    storeNodeUpperBound(ply, best, quiescenceDepth, nullMove);
    return best;
}

i32 quiescePv(int ply, i32 alpha, i32 beta, int qDepth) {
    // Step 1. Stop and horizon.
    if (searchStopped()) return stopValue;
    ++nodeCount;
    if (ply >= horizonPly) return evaluateForSideToMove();

    // Step 2. Endgame tables.
    i32 score;
    if (probeTables(ply, quiescenceDepth, score)) return score;
    setUpFrame(ply);

    // Step 3. Transposition table. A lower bound inside the window raises alpha.
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

    // Step 4. Stand pat.
    const i32 standPat = evaluateNode(ply);
    if (standPat >= beta) return standPat;
    best = std::max(best, standPat);
    if (standPat > alpha) {
        alpha = standPat;
        raised = true;
    }

    // Steps 10 and 11 below beta.
    const auto improve = [&](Move move) {
        if (score <= best) return;
        best = score;
        bestMove = move;
        if (score > alpha) {
            alpha = score;
            raised = true;
        }
    };

    // Step 6, first stage. The hash move, with steps 7 to 11; a quiet one only near the main search.
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

    // Second stage. Captures that pass delta pruning.
    MoveList& list = searchFrames[ply].list;
    generateByDelta(ply, alpha, standPat, best);
    for (i32 i = 0; i < list.count; ++i) list.scores[i] = mvvLva(list.moves[i], 5);

    for (i32 i = 0; i < list.count; ++i) {
        // Step 7. Make the move.
        selectBest(list, i);
        const Move move = list.moves[i];
        if (move == hashMove) continue;
        prefetchChild(move);
        makeMove(move);

        // Step 9. Search the child.
        score = leftKingInCheck() ? -mateScore : -quiescePv(ply + 1, -beta, -alpha, qDepth - 1);
        unmakeMove();

        // Steps 10 and 11. A beta cut, a new principal variation, or a fail-low.
        if (score >= beta) {
            storeNodeLowerBound(ply, score, cutDepth, move);
            return score;
        }
        improve(move);
    }

    // Step 12. The bounds: a score that raised alpha is exact.
    if (raised) {
        storeNodeLowerBound(ply, best, quiescenceDepth, bestMove);
        storeNodeUpperBound(ply, best, quiescenceDepth, bestMove);
    } else {
        storeNodeUpperBound(ply, best, quiescenceDepth, nullMove);
    }
    return best;
}

}  // namespace valku
