#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "chess/position.h"
#include "search/search_job.h"

// The text that a parent and its clients exchange, on pipes and over TCP alike: composing and parsing. The
// parent sends a job in seven lines, each with a client_ word of its own; the client answers each job with
// one cabresult line, also a job that was stopped.

namespace valku {

// The seven lines of a job. The history has the keys of the positions that a repetition can still reach.
std::string composeJob(const Position& position, const SearchJob& job);

// The lines of a job one by one; each text is what follows the word and one blank. They fill in a position,
// which need not be one that chess knows: whoever searches it judges it before. False if the text says what
// has no place in a position; the position is then of no use. Numbers are read leniently: a missing one is 0.
bool parseMen(std::string_view text, Position& position);  // clears it first; men and side to move
bool parseCastlings(std::string_view text, Position& position);
bool parseEpField(std::string_view text, Position& position);
bool parseFiftyMoves(std::string_view text, Position& position);
void parseKey(std::string_view text, Position& position);
bool parseHistory(std::string_view text, Position& position);

// The numbers of client_alphabeta, brought into the ranges that a search can have. The ply at the parent is
// dropped: the root of a client is at ply 1.
SearchJob parseJobNumbers(std::string_view text);

// The answer, with its line feed.
std::string composeResult(const SearchResult& result);

// Reads an answer without its line feed; nothing if it is none. The line of moves has origins and
// destinations only: it ends after a promotion, which has lost its piece, and before a castling move.
std::optional<SearchResult> parseResult(std::string_view response);

}  // namespace valku
