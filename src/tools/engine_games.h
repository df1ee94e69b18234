#pragma once

#include <string_view>

#include "book/pgn_reader.h"

// What the tools read from PGN records of the engine's own games.

namespace valku {

// A comment of the form value/depth, the value in pawns from the mover's view.
struct MoveComment {
    bool present = false;
    double value = 0;
    i32 depth = 0;
};

MoveComment commentOf(const PgnGame& game, i32 ply);

// The engine is Black if the name of Black holds its name, and White otherwise.
Color engineColor(const PgnGame& game);

inline bool engineIsToMove(const PgnPly& ply) {
    return ply.position.sideToMove == engineColor(ply.game);
}

}  // namespace valku
