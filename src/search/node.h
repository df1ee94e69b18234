#pragma once

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/piece_values.h"
#include "chess/position.h"
#include "chess/tables.h"
#include "eval/evaluate.h"
#include "search/hash_table.h"
#include "search/search_state.h"
#include "search/stop_word.h"
#include "search/upward_calls.h"

// What the five node functions share. Their steps are numbered alike:
//
//    1. Ends that need no look at the position: a stop, the horizon, mate distance pruning.
//    2. Draws by rule and endgame tables.
//    3. Transposition table; internal iterative deepening.
//    4. Static evaluation, or stand pat in quiescence search.
//    5. Null move.
//    6. Generation and order of the moves.
//    7. A move is made.
//    8. Reduction or extension.
//    9. Search of the child.
//   10. A score that reaches beta or raises alpha.
//   11. A score that fails low.
//   12. After the last move: mate and stalemate, and the store of the result.
//
// A step that a node function lacks leaves its number out.

namespace valku {

// Takes over the mobility sums for the node at `ply` and raises selDepth.
[[gnu::always_inline]] inline void setUpFrame(int ply) {
    searchFrames[ply + 1].ownMobility = searchFrames[ply].oppMobility;
    searchFrames[ply + 1].oppMobility = searchFrames[ply].ownMobility;
    if (ply > selDepth) selDepth = ply;
}

[[gnu::always_inline]] inline i32 evaluateForSideToMove() {
    return searchPosition.sideToMove == White ? evaluate() : -evaluate();
}

// The static evaluation of the node at `ply`, with the mobility sums that its frame holds.
[[gnu::always_inline]] inline i32 evaluateNode(int ply) {
    const SearchFrame& frame = searchFrames[ply + 1];
    const i32 balance = frame.ownMobility - frame.oppMobility;
    mobilityBalance = searchPosition.sideToMove == White ? balance : -balance;
    return evaluateForSideToMove();
}

// Asks the endgame tables if the remaining depth allows it. True with the score of the node. The comparison
// is in plies, since TBdistance may be too large for quarter plies.
[[gnu::always_inline]] inline bool probeTables(int ply, i32 depth, i32& score) {
    if (searchPosition.whiteMen + searchPosition.blackMen > largestTbMen || TBdistance > wholePlies(depth)) {
        return false;
    }
    ++tbProbes;
    if (!tablebaseProbe(ply, &score, searchPosition)) return false;
    ++tbHits;
    return true;
}

[[gnu::always_inline]] inline bool isDrawnByRule() {
    return searchPosition.state->fiftyMoves >= 100 || isRepetition();
}

// The cut that a table entry gives a zero-window node (beta - 1, beta), from a bound of at least `depth`: the
// lower one reaches beta, or the upper one stays below it. True with the score of the node.
[[gnu::always_inline]] inline bool cutsZws(const HashEntry& entry, int ply, i32 beta, i32 depth, i32& score) {
    score = scoreFromTable(entry.lowerScore, ply);
    if (entry.lowerDepth >= depth && score >= beta) return true;
    score = scoreFromTable(entry.upperScore, ply);
    return entry.upperDepth >= depth && score < beta;
}

// Prefetches the bucket of the position after a move that has not been made yet. The key ignores castling,
// promotion and en passant: the probe of such a child merely takes longer.
[[gnu::always_inline]] inline void prefetchChild(Move move) {
    const Position& p = searchPosition;
    const int from = moveFrom(move);
    const int to = moveTo(move);
    const u8 mover = p.board[from];
    const u8 target = p.board[to];
    const u32 capture = target == empty ? 0 : pieceKeyLow[target][to];
    prefetchHash(p.state->hashLow ^ epKey[p.state->epField] ^ epKey[noEpField] ^ 1 ^
                 pieceKeyLow[mover][from] ^ pieceKeyLow[mover][to] ^ capture);
}

[[gnu::always_inline]] inline void prefetchNullMove() {
    const StateRecord& state = *searchPosition.state;
    prefetchHash(state.hashLow ^ epKey[state.epField] ^ epKey[noEpField] ^ 1);
}

// The tag of a capture by MVV/LVA (https://www.chessprogramming.org/MVV-LVA): the most valuable victim first,
// then the cheapest attacker.
[[gnu::always_inline]] inline i32 mvvLva(Move move, i32 victimWeight) {
    const Position& p = searchPosition;
    return victimWeight * pieceValueByCode[p.board[moveTo(move)]] - pieceValueByCode[p.board[moveFrom(move)]];
}

// Makes a move. False if it was illegal; it has then been unmade.
[[gnu::always_inline]] inline bool tryMove(Move move) {
    prefetchChild(move);
    makeMove(move);
    if (!leftKingInCheck()) return true;
    unmakeMove();
    return false;
}

// True if the move that was unmade last captured nothing. En passant counts as no capture.
[[gnu::always_inline]] inline bool wasQuiet() {
    return searchPosition.state->captured == empty;
}

// The move with the largest subtree of a node that fails low. It serves as a hint if it took at least a third
// of the node's work.
class BigMove {
  public:
    BigMove() : loopStart(nodeCount), moveStart(nodeCount) {}

    void startMove() { moveStart = nodeCount; }

    void endMove(Move candidate) {
        if (nodeCount - moveStart <= maxUsed) return;
        maxUsed = nodeCount - moveStart;
        move = candidate;
    }

    Move hint() const { return nodeCount - loopStart > 3 * maxUsed ? nullMove : move; }

  private:
    const u64 loopStart;
    u64 moveStart;
    u64 maxUsed = 0;
    Move move = nullMove;
};

// Store a bound of the current position.
[[gnu::always_inline]] inline void storeNodeLowerBound(int ply, i32 score, i32 depth, Move move) {
    const StateRecord& state = *searchPosition.state;
    storeLowerBound(ply, state.hashHigh, state.hashLow, score, depth, move, state.fiftyMoves,
                    searchFrames[ply + 1].ownMobility);
}

[[gnu::always_inline]] inline void storeNodeUpperBound(int ply, i32 score, i32 depth, Move move) {
    const StateRecord& state = *searchPosition.state;
    storeUpperBound(ply, state.hashHigh, state.hashLow, score, depth, move, state.fiftyMoves,
                    searchFrames[ply + 1].ownMobility);
}

// The value of a node without legal moves, stored as exact at `depth`.
inline i32 storeMateOrStalemate(int ply, i32 depth) {
    const i32 score = searchFrames[ply].inCheck ? ply - mateScore : drawScore;
    storeNodeLowerBound(ply, score, depth, nullMove);
    storeNodeUpperBound(ply, score, depth, nullMove);
    return score;
}

}  // namespace valku
