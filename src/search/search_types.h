#pragma once

#include "chess/types.h"

// What the parts of a search hand to each other. Scores are from the view of the side to move, in hundredths
// of a pawn; depths are in quarter plies.

namespace valku {

constexpr i32 mateScore = 30000;      // a side that is mated at ply p has the score p - mateScore
constexpr i32 mateThreshold = 29000;  // scores at or beyond it, either way, are mate scores
constexpr i32 drawScore = 0;
constexpr i32 stopValue = 30000;  // returned by every node after a stop; meaningless

constexpr int horizonPly = 99;  // a node this deep returns the static evaluation
constexpr int frameCount = 101;

constexpr i32 onePly = 4;
constexpr i32 frontierDepth = onePly;  // zero-window nodes up to this depth are frontier nodes

// The plies of a depth, rounded down.
constexpr i32 wholePlies(i32 depth) {
    return depth >> 2;
}

// A line of moves, ended by 0.
constexpr int maxLineMoves = 100;
struct Line {
    Move moves[maxLineMoves + 1];
};

// What a search process returns for a job.
struct SearchResult {
    i32 value = 0;
    Line pv{};
    u64 nodes = 0;
    i32 selDepth = 0;  // greatest ply reached
    i32 tbProbes = 0;
    i32 tbHits = 0;
};

}  // namespace valku
