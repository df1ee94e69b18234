#pragma once

#include "chess/types.h"
#include "search/search_types.h"

// The working memory of the one search of a process. One thread at a time runs a search; the events that
// start and end a job hand this memory over.

namespace valku {

// What a node keeps per ply. Killers survive from one node of a ply to the next and are cleared at the start
// of a job.
//
// A node at ply p keeps the mobility sums in the frame of ply p + 1: `ownMobility` of the side to move at p,
// `oppMobility` of the other side. On entry they are taken over crosswise from frame p, so that until better
// is known the side to move has the mobility that it had two plies ago.
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

extern SearchFrame searchFrames[frameCount];

// Counted from the start of a job.
extern u64 nodeCount;
extern i32 selDepth;
extern i32 tbProbes;
extern i32 tbHits;

// The margin that the delta tests of quiescence add to the gain of a capture, in hundredths of a pawn.
extern i32 maxCompensation;

}  // namespace valku
