#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "chess/position.h"
#include "search/search_job.h"

// The text that a parent and its clients exchange, on pipes and over TCP alike. The parent sends a job in
// lines of client_ words; the client answers each job with one cabresult line, also one that was stopped.

namespace valku {

// The seven lines of a job. Of the history the keys are sent that a repetition can still reach.
std::string composeJob(const Position& position, const SearchJob& job);

// The answer, with its line feed.
std::string composeResult(const SearchResult& result);

// Reads an answer without its line feed; nothing if it is none. The line holds origins and destinations only:
// it ends behind a promotion, which has lost its piece, and before a castling move.
std::optional<SearchResult> parseResult(std::string_view response);

}  // namespace valku
