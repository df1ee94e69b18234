#include <algorithm>

#include "chess/move_generation.h"
#include "search/alpha_beta.h"
#include "search/move_ordering.h"
#include "search/node.h"
#include "search/quiescence.h"

namespace valku {

namespace {

constexpr i32 futilityMargin = 30;  // hundredths of a pawn
constexpr i32 acceptedDepth = 1;    // of a table entry: any but that of quiescence bounds which are no cuts

// What the stages of a frontier node share.
struct FrontierNode {
    const int ply;
    const i32 beta;
    SearchFrame& frame;
    HistoryTable& table;
    i32 best;
    i32 legal = 0;
    BigMove bigMove{};

    i32 score = 0;  // of the move tried last

    // Steps 7 to 11 for one move. True if it reaches beta, which ends the node with `score`.
    bool reachesBeta(Move move) {
        // Step 7. Make the move.
        const u8 piece = searchPosition.board[moveFrom(move)];
        if (!tryMove(move)) return false;
        bigMove.startMove();

        // Step 9. Search the child.
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeMove();

        // Step 10. A beta cut.
        if (score >= beta) {
            if (wasQuiet()) {
                updateKillers(frame, piece, move);
                rewardHistory(table, piece, moveTo(move), frontierDepth);
            }
            storeNodeLowerBound(ply, score, frontierDepth, move);
            return true;
        }

        // Step 11. A fail-low.
        ++legal;
        penalizeHistory(table, piece, moveTo(move));
        best = std::max(best, score);
        bigMove.endMove(move);
        return false;
    }
};

// Generates the captures with the first one to try in front.
void prepareCaptures(MoveList& list) {
    generateCaptures(list, 0);
    for (i32 i = 0; i < list.count; ++i) list.scores[i] = mvvLva(list.moves[i], 5);
    if (list.count == 0) return;
    selectBest(list, 0);
    prefetchChild(list.moves[0]);
}

// Generates the quiet moves in the order of their history.
void prepareQuietMoves(MoveList& list, const HistoryTable& table) {
    generateQuietMoves(list);
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        const i32 history = table.values[searchPosition.board[moveFrom(move)]][moveTo(move)];
        list.scores[i] = std::min(history, tagHistoryLimit);
    }
    sortByTag(list);
    if (list.count > 0) prefetchChild(list.moves[0]);
}

}  // namespace

i32 frontierZws(int ply, i32 beta) {
    // Steps 1 and 2. Stop, horizon, endgame tables, mate distance, draws.
    if (searchStopped()) return stopValue;
    ++nodeCount;
    if (ply >= horizonPly) return evaluateForSideToMove();
    i32 score;
    if (probeTables(ply, frontierDepth, score)) return score;
    const i32 best = ply - mateScore;
    if (beta <= best) return best;
    setUpFrame(ply);
    if (isDrawnByRule()) return drawScore;

    prefetchNullMove();

    // Step 3. Transposition table.
    SearchFrame& frame = searchFrames[ply];
    MoveList& list = frame.list;
    Move hashMove = nullMove;
    bool capturesReady = false;
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        if (cutsZws(entry, ply, beta, acceptedDepth, score)) return score;
        if (isPseudoLegal(entry.lowerMove)) {
            hashMove = entry.lowerMove;
        } else if (isPseudoLegal(entry.upperMove)) {
            hashMove = entry.upperMove;
        }
        if (hashMove) prefetchChild(hashMove);
    } else {
        prepareCaptures(list);
        searchFrames[ply + 1].ownMobility = list.mobility;
        capturesReady = true;
    }

    // Step 4. Static evaluation.
    frame.inCheck = inCheck();
    const i32 staticEval = evaluateNode(ply);
    const i32 margin = beta - staticEval;

    // Step 5. Null move, even after another one.
    if (margin <= 0 && !frame.inCheck) {
        makeNullMove();
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeNullMove();
        if (score >= beta) return score;
    }

    FrontierNode node{ply, beta, frame, historyTableFor(margin), best};

    // Step 6, first stage. The hash move. It stays in the later stages and may be searched again.
    if (hashMove && node.reachesBeta(hashMove)) return node.score;

    // Second stage. Captures.
    if (!capturesReady) prepareCaptures(list);
    for (i32 i = 0; i < list.count; ++i) {
        if (i + 1 < list.count) {
            selectBest(list, i + 1);
            prefetchChild(list.moves[i + 1]);
        }
        if (node.reachesBeta(list.moves[i])) return node.score;
    }

    // Third stage. Quiet moves, or none of them: futility pruning
    // (https://www.chessprogramming.org/Futility_Pruning) if the static evaluation is far below beta.
    if (margin > futilityMargin && !frame.inCheck) {
        node.best = std::max(node.best, staticEval + futilityMargin);
        ++node.legal;
    } else {
        prepareQuietMoves(list, node.table);
        for (i32 i = 0; i < list.count; ++i) {
            if (i + 1 < list.count) prefetchChild(list.moves[i + 1]);
            if (node.reachesBeta(list.moves[i])) return node.score;
        }
    }

    // Step 12. Mate, stalemate, or an upper bound.
    if (node.legal == 0) return storeMateOrStalemate(ply, frontierDepth);
    storeNodeUpperBound(ply, node.best, frontierDepth, node.bigMove.hint());
    return node.best;
}

}  // namespace valku
