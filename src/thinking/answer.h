#pragma once

#include <optional>

#include "thinking/search_request.h"

// How a search cycle comes to its answer, from the book or from the search. Thinking thread.

namespace valku {

// Picks a move for gamePosition from the book and gives it as the answer of this cycle. While the engine
// ponders, the move waits for the end of that. False, and nothing done, if the book has no usable move or is
// not to be asked.
bool tryBookMove(const SearchRequest& request);

// Gives bestMove as the answer, or nothing if the search has been given up.
void answerWithBestMove(const SearchRequest& request);

// For a position without a legal move: there is no answer. A ponder search stays one until the expected reply
// or another move comes.
void answerNothing(const SearchRequest& request);

}  // namespace valku
