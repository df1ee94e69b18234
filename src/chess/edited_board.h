#pragma once

#include <vector>

#include "chess/position.h"

namespace valku {

enum class BoardFault { none, kings, tooManyMen, pawnRank, check };

// A board on which men are put down one by one, apart from any game, until they make a position.
class EditedBoard {
  public:
    // The men of a position, in the order of its lists.
    void take(const Position& position);

    void clear() { men.clear(); }

    // A man that stands on the square already makes way.
    void place(u8 code, int square);

    // Makes the men gamePosition, with every castling right that they allow and no game before it. With a
    // fault gamePosition stays as it is: not exactly one king a side, more men than the lists hold, a pawn on
    // the first or last rank, or the side not to move in check.
    BoardFault setUp(Color sideToMove) const;

  private:
    struct Man {
        u8 code;
        int square;
    };

    std::vector<Man> men;
};

}  // namespace valku
