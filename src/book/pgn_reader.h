#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "chess/position.h"

// The games of a PGN file, one after the other. Used by the import of a book and by the statistics over the
// engine's own games.

namespace valku {

enum class PgnResult : i32 {
    none = -1,  // the next game's tags came first
    draw = 0,
    whiteWon = 1,
    blackWon = 2,
    unknown = 3,    // "*"
    endOfData = 4,  // the data ended first
};

// One game as its text has it, nothing of it examined. All texts are parts of the file in memory and valid
// while the walk lasts; what a game lacks is empty.
struct PgnGame {
    static constexpr i32 maxPlies = 512;

    struct Ply {
        std::string_view move;
        std::string_view glyphs;   // every !, ? and $n right behind the move
        std::string_view comment;  // of several, from the first one's begin to the last one's end
    };

    i32 plyCount = 0;     // later moves of a longer game are dropped
    Ply plies[maxPlies];  // the first plyCount are valid
    std::string_view event, white, black, whiteElo, blackElo, fen, round;
    std::string_view resultText;  // as it stands behind the moves
    PgnResult result = PgnResult::none;
};

// A move of the walk.
struct PgnPly {
    const Position& position;  // gamePosition, before the move
    Move move;
    i32 ply;  // from 0
    const PgnGame& game;
    bool first;  // the game is the first of the run from which moves are shown
};

using PgnVisitor = std::function<void(const PgnPly&)>;

// Shows every move of a file's games, up to plyLimit in each, and plays it on gamePosition. A game ends early
// at a move that cannot be read, and one whose FEN cannot be read is passed over; both are told, and the walk
// goes on. Chess960 must be off. The visitor leaves gamePosition as it found it. It is not told which call is
// the last: whoever has a report to give gives it in `atEnd`, which comes behind the last move of all, or if
// there is none.
//
// False, with a line sent, if the file could not be opened; only a regular file can.
bool walkPgnFile(
    const std::string& path, const PgnVisitor& perMove, i32 plyLimit,
    const std::function<void()>& atEnd = [] {});

}  // namespace valku
