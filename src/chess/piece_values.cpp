#include "chess/piece_values.h"

namespace valku {

i32 pawnValue = 100;
i32 knightValue = 370;
i32 bishopValue = 381;
i32 rookValue = 580;
i32 queenValue = 1160;

i32 pieceValueByCode[256];

void updatePieceValues() {
    pieceValueByCode[WhitePawn] = pieceValueByCode[BlackPawn] = pawnValue;
    pieceValueByCode[WhiteKnight] = pieceValueByCode[BlackKnight] = knightValue;
    pieceValueByCode[WhiteBishop] = pieceValueByCode[BlackBishop] = bishopValue;
    pieceValueByCode[WhiteRook] = pieceValueByCode[BlackRook] = rookValue;
    pieceValueByCode[WhiteQueen] = pieceValueByCode[BlackQueen] = queenValue;
}

}  // namespace valku
