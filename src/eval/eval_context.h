#pragma once

#include <limits>

#include "chess/side.h"
#include "chess/types.h"
#include "eval/pawn_structure.h"

// What the terms of one evaluation share.

namespace valku {

inline bool stands(u8 man, int square) {
    return searchPosition.board[square] == man;
}

// The two largest threats against the men of a side. The side can parry one of them, so the second one
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

    // Half of what the second largest threat would win; 0 if there is only one.
    i32 unanswered() const { return second_ == none ? 0 : second_ / 2; }

  private:
    static constexpr i32 none = std::numeric_limits<i32>::min();

    i32 largest_ = none;
    i32 second_ = none;
};

// EvalContext::race of a side without a pawn that the enemy king cannot catch.
constexpr i32 noRace = 122;

// The arrays of two are indexed by Color.
struct EvalContext {
    const PawnEntry& pawns;
    ThreatList threatened[2] = {};   // threats against the men of that color
    i32 attackOnKing[2] = {0, 0};    // attack units against that color's king
    i32 race[2] = {noRace, noRace};  // moves until the fastest pawn queens that the enemy king cannot catch
    i8 minorsOnFile[8] = {};         // knights and bishops of both colors
};

}  // namespace valku
