#pragma once

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/position.h"
#include "chess/tables.h"
#include "eval/evaluate.h"
#include "search/hash_table.h"
#include "search/search_state.h"
#include "search/stop_word.h"
#include "search/upward_calls.h"

// The steps that all node functions share.

namespace valku {

// Takes over the mobility sums for the node at `ply` and notes the ply.
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

// Asks the tables where the remaining depth (quarter plies, rounded down to plies: any TBdistance is safe to
// compare with those) allows it. True with the score of the node.
[[gnu::always_inline]] inline bool probeTables(int ply, i32 depth, i32& score) {
    if (searchPosition.whiteMen + searchPosition.blackMen > largestTbMen || TBdistance > (depth >> 2))
        return false;
    ++tbProbes;
    if (!tablebaseProbe(ply, &score, searchPosition)) return false;
    ++tbHits;
    return true;
}

[[gnu::always_inline]] inline bool isDrawnByRule() {
    return searchPosition.state->fiftyMoves >= 100 || isRepetition();
}

// Fetches the bucket of the position behind a move that has not been made yet. The key leaves castling,
// promotion and en passant out: it is a hint, and the probe of such a child merely waits longer.
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

// Makes a move and tells whether it was legal; an illegal one has been unmade again.
[[gnu::always_inline]] inline bool tryMove(Move move) {
    prefetchChild(move);
    makeMove(move);
    if (!leftKingInCheck()) return true;
    unmakeMove();
    return false;
}

// Did the move that last left the current record take nothing? En passant counts as nothing taken.
[[gnu::always_inline]] inline bool wasQuiet() {
    return searchPosition.state->captured == empty;
}

// Remembers the move with the largest subtree. It is worth a hint only if it took a third of the node's work.
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

// Stores under the key of the current position.
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
