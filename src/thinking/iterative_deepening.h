#pragma once

#include "thinking/search_request.h"

namespace valku {

// What a search cycle knows before its first iteration.
struct DeepeningStart {
    const SearchRequest& request;
    i32 depthLimit;       // plies
    double scheduled;     // seconds; unlimitedSeconds for no limit
    double maxTime;       // seconds, the hard limit
    i32 quiescenceScore;  // of the root, in place of an iteration of depth 1
};

// Iterative deepening with an aspiration window around the last score
// (https://www.chessprogramming.org/Iterative_Deepening, .../Aspiration_Windows): iterations of 2, 3, ...
// plies until depth, time or a stop ends it. Each reports its main line; there is at least one legal root
// move. Thinking thread.
void deepenIteratively(const DeepeningStart& start);

}  // namespace valku
