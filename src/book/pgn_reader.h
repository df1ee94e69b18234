#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "chess/position.h"

// The games of a file in Portable Game Notation (https://www.chessprogramming.org/Portable_Game_Notation),
// one after the other.

namespace valku {

enum class PgnResult : i32 {
    none = -1,  // the next game's tags came first
    draw = 0,
    whiteWon = 1,
    blackWon = 2,
    unknown = 3,    // "*"
    endOfData = 4,  // the data ended first
};

// One game as its text has it, unchecked. All texts are parts of the file in memory and valid while the walk
// lasts; what a game lacks is empty.
struct PgnGame {
    static constexpr i32 maxPlies = 512;

    struct Ply {
        std::string_view move;
        std::string_view glyphs;   // every !, ? and $n right after the move
        std::string_view comment;  // of several, from the start of the first to the end of the last
    };

    i32 plyCount = 0;     // later moves of a longer game are dropped
    Ply plies[maxPlies];  // the first plyCount are valid
    std::string_view event, white, black, whiteElo, blackElo, fen, round;
    std::string_view resultText;  // as it stands after the moves
    PgnResult result = PgnResult::none;
};

// A move of the walk.
struct PgnPly {
    const Position& position;  // gamePosition, before the move
    Move move;
    i32 ply;  // from 0
    const PgnGame& game;
};

// Returns false to end the walk at once. Leaves gamePosition as it found it.
using PgnVisitor = std::function<bool(const PgnPly&)>;

// Calls perMove for every move of a file's games, up to plyLimit in each, and plays the move on gamePosition.
// A game ends early at a move that cannot be read, and one whose FEN cannot be read is skipped; both are
// reported, and the walk goes on. `atEnd` is called after the last move of all, or if there is none, and
// before the number of games is reported; neither happens if the visitor has ended the walk, which then
// returns false. Chess960 must be off. Throws Fault if the file cannot be read; only a regular file can.
bool walkPgnFile(
    const std::string& path, const PgnVisitor& perMove, i32 plyLimit,
    const std::function<void()>& atEnd = [] {});

}  // namespace valku
