#pragma once

#include "search/history.h"
#include "search/search_state.h"

// The order of moves in a full node. A tag says in one word where a move stands and how far it may be
// reduced: its low 20 bits are the clipped history.

namespace valku {

constexpr i32 reducedBelow = 0x8200000;  // moves with a lower tag are reduced
constexpr i32 tagHistoryMask = 0xFFFFF;
constexpr i32 tagHistoryOffset = 0x80000;
constexpr i32 tagHistoryLimit = 0x100000;

// Tags every move of the frame's list by hash move, checks, static exchange evaluation, killers and history.
// `margin` is beta less the static evaluation.
void tagMoves(SearchFrame& frame, const HistoryTable& table, i32 margin, Move hashMove);

// Stable insertion sort, highest tag first.
void sortByTag(MoveList& list);

// One step of a selection sort: swaps the first of the highest tags from `front` on into place `front`.
inline void selectBest(MoveList& list, i32 front) {
    i32 best = front;
    for (i32 i = front + 1; i < list.count; ++i) {
        if (list.scores[i] > list.scores[best]) best = i;
    }
    const Move move = list.moves[front];
    const i32 score = list.scores[front];
    list.moves[front] = list.moves[best];
    list.scores[front] = list.scores[best];
    list.moves[best] = move;
    list.scores[best] = score;
}

// Shuffles the entries `first` to `last` with their tags (Fisher and Yates; Knuth, The Art of Computer
// Programming 2, 3.4.2, algorithm P).
void shuffleMoves(MoveList& list, i32 first, i32 last);

// The killer heuristic (S. Akl, M. Newborn, "The Principal Continuation and the Killer Heuristic", ACM 1977):
// two quiet moves of a ply that last reached beta or raised alpha.
inline void clearKillers(SearchFrame& frame) {
    frame.killer1Piece = frame.killer2Piece = 0;
    frame.killer1Move = frame.killer2Move = nullMove;
}

// `piece` is the piece that stood on the origin.
inline void updateKillers(SearchFrame& frame, u8 piece, Move move) {
    if (frame.killer1Move == move) return;
    frame.killer2Piece = frame.killer1Piece;
    frame.killer2Move = frame.killer1Move;
    frame.killer1Piece = piece;
    frame.killer1Move = move;
}

}  // namespace valku
