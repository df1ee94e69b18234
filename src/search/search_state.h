#pragma once

#include "chess/types.h"
#include "search/search_types.h"

// The working memory of the one search of a process. Only the thread that runs the search writes it; the
// events that start and end a job hand it from thread to thread.

namespace valku {

// What a node keeps per ply. Killers survive from one node of a ply to the next and are cleared at the start
// of a job.
//
// A node at ply p keeps the mobility sums in the frame of ply p + 1: `ownMobility` of the side to move at p,
// `oppMobility` of the other side. On entry they are taken over crosswise from frame p: until its own moves
// have been counted, the side to move has the mobility that it had two plies earlier.
struct SearchFrame {
    i32 ownMobility;
    i32 oppMobility;
    u8 killer1Piece;
    Move killer1Move;
    u8 killer2Piece;
    Move killer2Move;
    MoveList list;
    u8 inCheck;
};

inline SearchFrame searchFrames[frameCount];

// Counted from the start of a job.
inline u64 nodeCount = 0;
inline i32 selDepth = 0;  // greatest ply reached
inline i32 tbProbes = 0;
inline i32 tbHits = 0;

// A setting, written by the command thread while no search runs: the margin of delta pruning, in hundredths
// of a pawn.
inline i32 maxCompensation = 120;

}  // namespace valku
