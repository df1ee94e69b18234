#include <algorithm>

#include "chess/move_generation.h"
#include "chess/piece_values.h"
#include "search/alpha_beta.h"
#include "search/move_ordering.h"
#include "search/node.h"
#include "search/quiescence.h"

namespace valku {

namespace {

constexpr i32 futilityMargin = 30;

// One frontier node: what its stages hand on to each other.
struct FrontierNode {
    const int ply;
    const i32 beta;
    SearchFrame& frame;
    HistoryTable& table;
    i32 best;
    i32 legal = 0;
    BigMove bigMove{};

    i32 score = 0;  // of the move tried last

    // Answers a move with quiescence. True if that reaches beta, which ends the node with `score`.
    bool reachesBeta(Move move) {
        const u8 piece = searchPosition.board[moveFrom(move)];
        if (!tryMove(move)) return false;
        bigMove.startMove();
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeMove();
        if (score >= beta) {
            if (wasQuiet()) {
                updateKillers(frame, piece, move);
                rewardHistory(table, piece, moveTo(move), frontierDepth);
            }
            storeNodeLowerBound(ply, score, frontierDepth, move);
            return true;
        }
        ++legal;
        penaliseHistory(table, piece, moveTo(move));
        best = std::max(best, score);
        bigMove.endMove(move);
        return false;
    }
};

// Generates the captures with the first one to try in front.
void prepareCaptures(MoveList& list) {
    const Position& p = searchPosition;
    generateCaptures(list, 0);
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        list.scores[i] =
            5 * pieceValueByCode[p.board[moveTo(move)]] - pieceValueByCode[p.board[moveFrom(move)]];
    }
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
    // Step 1. Ends that need no look at the position's moves.
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

    // Step 2. The table. Depths count only as zero or not.
    SearchFrame& frame = searchFrames[ply];
    MoveList& list = frame.list;
    Move hashMove = nullMove;
    bool capturesReady = false;
    HashEntry entry;
    if (probeHash(*searchPosition.state, entry)) {
        searchFrames[ply + 1].ownMobility = entry.mobility;
        const i32 lower = scoreFromTable(entry.lowerScore, ply);
        if (entry.lowerDepth && lower >= beta) return lower;
        const i32 upper = scoreFromTable(entry.upperScore, ply);
        if (entry.upperDepth && upper < beta) return upper;
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

    // Step 3. Null move. Two of them may follow each other here.
    frame.inCheck = inCheck();
    const i32 staticEval = evaluateNode(ply);
    const i32 margin = beta - staticEval;
    if (margin <= 0 && !frame.inCheck) {
        makeNullMove();
        score = -quiesceZws(ply + 1, 1 - beta);
        unmakeNullMove();
        if (score >= beta) return score;
    }

    FrontierNode node{ply, beta, frame, historyTableFor(margin), best};

    // Step 4. The hash move. It stays in the later stages and may be searched again.
    if (hashMove && node.reachesBeta(hashMove)) return node.score;

    // Step 5. Captures.
    if (!capturesReady) prepareCaptures(list);
    for (i32 i = 0; i < list.count; ++i) {
        if (i + 1 < list.count) {
            selectBest(list, i + 1);
            prefetchChild(list.moves[i + 1]);
        }
        if (node.reachesBeta(list.moves[i])) return node.score;
    }

    // Step 6. Quiet moves, unless the static evaluation is so far below beta that they are taken to fail.
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

    if (node.legal == 0) return storeMateOrStalemate(ply, frontierDepth);
    storeNodeUpperBound(ply, node.best, frontierDepth, node.bigMove.hint());
    return node.best;
}

}  // namespace valku
