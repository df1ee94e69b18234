#pragma once

#include <limits>

#include "chess/side.h"
#include "chess/types.h"
#include "eval/pawn_structure.h"

// What the terms of one evaluation tell each other.

namespace valku {

inline bool stands(u8 man, int square) {
    return searchPosition.board[square] == man;
}

// The two dearest threats against the men of a side. One can be answered, so the second is the one that
// counts.
class ThreatList {
  public:
    void add(i32 value) {
        if (value > largest_) {
            second_ = largest_;
            largest_ = value;
        } else if (value > second_) {
            second_ = value;
        }
    }

    // Half of what the second threat would win; 0 without one.
    i32 unanswered() const { return second_ == none ? 0 : second_ / 2; }

  private:
    static constexpr i32 none = std::numeric_limits<i32>::min();

    i32 largest_ = none;
    i32 second_ = none;
};

// Moves that a pawn race would take if the side has no pawn that wins one.
constexpr i32 noRace = 122;

// The arrays of two are indexed by Color.
struct EvalContext {
    const PawnEntry& pawns;
    ThreatList threatened[2] = {};  // against the men of that colour
    i32 attackOnKing[2] = {0, 0};   // points of the attack on that colour's king
    i32 race[2] = {noRace, noRace};
    i8 minorsOnFile[8] = {};  // knights and bishops of both colours
};

}  // namespace valku
