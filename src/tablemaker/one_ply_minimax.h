#pragma once

#include <algorithm>
#include <limits>

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "tablebases/probe.h"

// The value of a position by a minimax search of one ply over the values of a table, on the scale of
// tablebases/probe.h and from the side to move's point of view.

namespace valku {

// What the value of a position is worth to the side whose move led to it: a mate is one move farther away for
// the winner, and a win of one side is a loss of the other.
constexpr i32 valueBeforeMove(i32 value) {
    if (value == noTableValue) return noTableValue;
    return value > 0 ? 1 - value : -value;
}

// The value by the legal moves of the position alone, which is left as it was. `lookUp` gives the value of a
// position without a right to capture en passant, of which tables know nothing. noTableValue if it gave that
// for one of the moves.
template <class LookUp>
i32 valueByMoves(Position& position, const LookUp& lookUp);

// The value by `lookUp`, or by the moves if the position has a right to capture en passant.
template <class LookUp>
i32 valueOf(Position& position, const LookUp& lookUp) {
    return position.state->epField == noEpField ? lookUp(position) : valueByMoves(position, lookUp);
}

template <class LookUp>
i32 valueByMoves(Position& position, const LookUp& lookUp) {
    constexpr i32 none = std::numeric_limits<i32>::min();
    i32 best = none;
    MoveList list;
    generateAllMoves(position, list);
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(position, list.moves[i]);
        if (!leftKingInCheck(position)) best = std::max(best, valueBeforeMove(valueOf(position, lookUp)));
        unmakeMove(position);
    }
    if (best != none) return best;
    return inCheck(position) ? matedTableValue : 0;
}

}  // namespace valku
