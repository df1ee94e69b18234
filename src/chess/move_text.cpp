#include "chess/move_text.h"

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/move_generation.h"
#include "chess/side.h"

namespace valku {

namespace {

struct PromotionLetter {
    char letter;
    u8 white;
    u8 black;
};

constexpr PromotionLetter promotionLetters[] = {
    {'N', WhiteKnight, BlackKnight},
    {'B', WhiteBishop, BlackBishop},
    {'R', WhiteRook, BlackRook},
    {'Q', WhiteQueen, BlackQueen},
};

// 0 if `promotion` is no piece.
char promotionLetter(u8 promotion) {
    for (const PromotionLetter& row : promotionLetters) {
        if (row.white == promotion || row.black == promotion) return row.letter;
    }
    return 0;
}

const char* castlingText(u32 castling) {
    return castling == shortCastling ? "O-O" : "O-O-O";
}

std::string coordinates(Move move) {
    return squareText(moveFrom(move)) + squareText(moveTo(move));
}

struct SquarePair {
    int from;
    int to;
    u32 castling;
};

template <Color Us>
SquarePair castlingOf(const Position& p, u32 castling) {
    return {kingOf<Us>(p), Side<Us>::square(castling == shortCastling ? G1 : C1), castling};
}

template <Color Us>
bool isNormalCastling(const Position& p, int from, int to) {
    using S = Side<Us>;
    return from == S::square(E1) && kingOf<Us>(p) == from && (to == S::square(G1) || to == S::square(C1));
}

// Castling given as a rook move over the king: origin is the rook's square, destination a square of its rank
// beyond the king.
template <Color Us>
u32 rookJumpsKing(const Position& p, int from, int to) {
    using S = Side<Us>;
    const int king = kingOf<Us>(p);
    if (S::relativeRank(to) != 0) return noCastling;
    if (from == p.state->castlings[S::longRight] && to > king) return longCastling;
    if (from == p.state->castlings[S::shortRight] && to < king) return shortCastling;
    return noCastling;
}

template <Color Us>
u32 kingMovesTwoFiles(const Position& p, int from, int to) {
    if (from != kingOf<Us>(p)) return noCastling;
    const int files = fileOf(to) - fileOf(from);
    if (files <= -2) return longCastling;
    return files >= 2 ? shortCastling : noCastling;
}

template <Color Us>
u32 kingTakesRook(const Position& p, int from, int to) {
    using S = Side<Us>;
    if (from != kingOf<Us>(p)) return noCastling;
    if (to == p.state->castlings[S::shortRight]) return shortCastling;
    return to == p.state->castlings[S::longRight] ? longCastling : noCastling;
}

SquarePair resolveChess960(const Position& p, int from, int to) {
    if (const u32 castling = rookJumpsKing<White>(p, from, to)) return castlingOf<White>(p, castling);
    if (const u32 castling = rookJumpsKing<Black>(p, from, to)) return castlingOf<Black>(p, castling);
    if (const u32 castling = kingMovesTwoFiles<White>(p, from, to)) return castlingOf<White>(p, castling);
    if (const u32 castling = kingMovesTwoFiles<Black>(p, from, to)) return castlingOf<Black>(p, castling);
    if (const u32 castling = kingTakesRook<White>(p, from, to)) return castlingOf<White>(p, castling);
    if (const u32 castling = kingTakesRook<Black>(p, from, to)) return castlingOf<Black>(p, castling);
    return {from, to, noCastling};
}

SquarePair resolveNormal(const Position& p, int from, int to) {
    const bool castles = isNormalCastling<White>(p, from, to) || isNormalCastling<Black>(p, from, to);
    return {from, to, castles ? (fileOf(to) == 6 ? shortCastling : longCastling) : noCastling};
}

}  // namespace

std::string squareText(int square) {
    return {static_cast<char>('a' + fileOf(square)), static_cast<char>('1' + rankOf(square))};
}

int textToSquare(std::string_view text) {
    const bool named =
        text.size() >= 2 && text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8';
    return named ? makeSquare(text[0] - 'a', text[1] - '1') : noSquare;
}

bool textToSquares(std::string_view text, int& from, int& to) {
    if (text.size() < 4) return false;
    from = textToSquare(text);
    to = textToSquare(text.substr(2));
    return from != noSquare && to != noSquare;
}

u8 promotionPiece(char letter, Color mover) {
    for (const PromotionLetter& row : promotionLetters) {
        if (row.letter == letter) return mover == White ? row.white : row.black;
    }
    return 0;
}

std::string moveToText(Move move) {
    const u32 castling = moveCastling(move);
    if (castling && chess960) return castlingText(castling);
    std::string text = coordinates(move);
    if (const char letter = promotionLetter(movePromotion(move))) text += letter;
    return text;
}

std::string moveToUciText(Move move, const StateRecord& before) {
    const u32 castling = moveCastling(move);
    if (castling && arenaCastlingNotation) return castlingText(castling);
    if (castling && chess960) {
        const bool white = rankOf(moveTo(move)) == 0;
        const int shortRight = white ? whiteShort : blackShort;
        const int longRight = white ? whiteLong : blackLong;
        const u8 rook = before.castlings[castling == shortCastling ? shortRight : longRight];
        return squareText(moveFrom(move)) + squareText(rook);
    }
    std::string text = coordinates(move);
    if (const char letter = promotionLetter(movePromotion(move)))
        text += static_cast<char>(letter - 'A' + 'a');
    return text;
}

Move textToMove(int from, int to, u32 castling, const Position& position) {
    MoveList list;
    generateAllMoves(position, list);
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        const u8 promotion = movePromotion(move);
        if (moveFrom(move) == from && moveTo(move) == to && moveCastling(move) == castling &&
            (promotion == 0 || promotion == WhiteQueen || promotion == BlackQueen)) {
            return move;
        }
    }
    return nullMove;
}

Move findLegalMove(int from, int to, const Position& position) {
    for (const u32 castling : {noCastling, shortCastling, longCastling}) {
        const Move move = textToMove(from, to, castling, position);
        if (move != nullMove && isLegal(position, move)) return move;
    }
    return nullMove;
}

Move withPromotion(Move move, u8 piece) {
    const u8 queen = movePromotion(move);
    if (queen == WhiteQueen && piece != WhiteKnight && piece != WhiteBishop && piece != WhiteRook)
        return move;
    if (queen == BlackQueen && piece != BlackKnight && piece != BlackBishop && piece != BlackRook)
        return move;
    if (queen == 0) return move;
    return (move & ~(Move{0xFF} << 16)) | Move{piece} << 16;
}

Move uciTextToMove(std::string_view text, const Position& position) {
    const Color us = position.sideToMove == White ? White : Black;
    SquarePair squares{};
    char letter = 0;
    if (text == "O-O" || text == "O-O-O") {
        const u32 castling = text == "O-O" ? shortCastling : longCastling;
        squares = us == White ? castlingOf<White>(position, castling) : castlingOf<Black>(position, castling);
    } else {
        int from = noSquare, to = noSquare;
        if (!textToSquares(text, from, to)) return nullMove;
        squares = chess960 ? resolveChess960(position, from, to) : resolveNormal(position, from, to);
        if (text.size() == 5 && text[4] >= 'a') letter = static_cast<char>(text[4] - 'a' + 'A');
    }
    const Move move = textToMove(squares.from, squares.to, squares.castling, position);
    if (move == nullMove || !isLegal(position, move)) return nullMove;
    return withPromotion(move, promotionPiece(letter, us));
}

}  // namespace valku
