#include "chess/edited_board.h"

#include <algorithm>

#include "chess/attacks.h"
#include "chess/castling_rights.h"
#include "chess/fen.h"
#include "chess/side.h"

namespace valku {

void EditedBoard::take(const Position& p) {
    struct List {
        const u8* squares;
        u8 code;
    };
    const List lists[] = {
        {p.whitePawns, WhitePawn},     {p.whiteKnights, WhiteKnight}, {p.whiteBishops, WhiteBishop},
        {p.whiteRooks, WhiteRook},     {p.whiteQueens, WhiteQueen},   {p.blackPawns, BlackPawn},
        {p.blackKnights, BlackKnight}, {p.blackBishops, BlackBishop}, {p.blackRooks, BlackRook},
        {p.blackQueens, BlackQueen},
    };
    clear();
    for (const List& list : lists) {
        for (const u8* square = list.squares; *square != noSquare; ++square) place(list.code, *square);
    }
    place(WhiteKing, p.whiteKing);
    place(BlackKing, p.blackKing);
}

void EditedBoard::place(u8 code, int square) {
    std::erase_if(men, [&](const Man& man) { return man.square == square; });
    men.push_back({code, square});
}

BoardFault EditedBoard::setUp(Color sideToMove) const {
    for (const u8 king : {WhiteKing, BlackKing}) {
        const auto isThisKing = [&](const Man& man) { return man.code == king; };
        if (std::count_if(men.begin(), men.end(), isThisKing) != 1) return BoardFault::kings;
    }
    Position p;
    clearPosition(p);
    for (const Man& man : men) {
        if ((man.code & pawnFlag) && (rankOf(man.square) == 0 || rankOf(man.square) == 7))
            return BoardFault::pawnRank;
        if (!placeMan(p, man.code, man.square)) return BoardFault::tooManyMen;
    }
    p.sideToMove = sideToMove;
    deriveCastlings(p, chess960);
    computeDerived(p);
    if (leftKingInCheck(p)) return BoardFault::check;
    gamePosition = p;
    droppedGameMoves = 0;
    return BoardFault::none;
}

}  // namespace valku
