#pragma once

#include <vector>

#include "chess/position.h"

namespace valku {

enum class BoardFault { none, kings, tooManyMen, pawnRank, check };

// A board that is set up man by man, separate from any game, until it becomes gamePosition.
class EditedBoard {
  public:
    // The men of a position, in the order of its lists.
    void take(const Position& position);

    void clear() { men.clear(); }

    // Replaces the man on the square, if any.
    void place(u8 code, int square);

    // Makes the board gamePosition, with every castling right that it allows and without a history. On a
    // fault gamePosition stays as it is: not exactly one king a side, more men than the lists hold, a pawn on
    // the first or last rank, or the side not to move in check. The engine must be idle.
    BoardFault setUp(Color sideToMove) const;

  private:
    struct Man {
        u8 code;
        int square;
    };

    std::vector<Man> men;
};

}  // namespace valku
