#include "chess/pgn_move.h"

#include "chess/attacks.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/side.h"
#include "chess/tables.h"

namespace valku {

namespace {

constexpr const char* noRank = "error in convertPGNMove2move: value not between '1' and '8'!\n";
constexpr const char* noFile = "error in convertPGNMove2move: value not between 'a' and 'h'!\n";
constexpr const char* neitherRankNorCapture =
    "error in convertPGNMove2move: value neither between '1' and '8' nor 'x'!\n";
constexpr const char* noDisambiguation =
    "error in convertPGNMove2move: value neither between '1'-'8' nor 'a'-'h' nor 'x'!\n";
constexpr const char* noMan = "error in convertPGNMove2move: value not 'N', 'B', 'R', 'Q' or 'K'!\n";
constexpr const char* noMove = "\nerror in convertPGNMove2move: move could not be correctly converted!\n";

// A move, or the reason why there is none.
struct Reading {
    Move move;
    const char* complaint;
};

constexpr Reading refused(const char* complaint) {
    return {nullMove, complaint};
}

constexpr Reading found(Move move) {
    return {move, move == nullMove ? noMove : nullptr};
}

constexpr bool isFile(char c) {
    return c >= 'a' && c <= 'h';
}
constexpr bool isRank(char c) {
    return c >= '1' && c <= '8';
}
constexpr int squareOf(char file, char rank) {
    return makeSquare(file - 'a', rank - '1');
}

// What may follow a move: signs of check and mate, and annotation glyphs.
constexpr bool isMark(char c) {
    return c == '+' || c == '#' || c == '!' || c == '?';
}

constexpr bool onlyMarks(std::string_view text) {
    for (const char c : text) {
        if (!isMark(c)) return false;
    }
    return true;
}

// Past the end of the text a character that is part of no move.
constexpr char charAt(std::string_view text, std::size_t index) {
    return index < text.size() ? text[index] : '\0';
}

template <Color Us>
constexpr u8 manOfLetter(char letter) {
    switch (letter) {
        case 'N':
            return Side<Us>::knight;
        case 'B':
            return Side<Us>::bishop;
        case 'R':
            return Side<Us>::rook;
        case 'Q':
            return Side<Us>::queen;
        case 'K':
            return Side<Us>::king;
        default:
            return 0;
    }
}

// True if a pseudo-legal move is legal. Most moves need not be made for that: unless the king is in check,
// only a move of its own, an en passant capture and a move of a man on a line with it can expose it.
template <Color Us>
bool leavesKingSafe(Move move) {
    Position& p = gamePosition;
    const int from = moveFrom(move);
    const int king = kingOf<Us>(p);
    const bool mayExpose =
        from == king || moveTo(move) == p.state->epField || directionTable[king - from] != 0;
    if (!mayExpose && !inCheck(p)) return true;
    makeMove(p, move);
    const bool safe = !leftKingInCheck(p);
    unmakeMove(p);
    return safe;
}

template <Color Us>
bool isLegalMove(Move move) {
    return isPseudoLegal(gamePosition, move) && leavesKingSafe<Us>(move);
}

template <Color Us>
Reading readCastling(std::string_view text) {
    const bool isLong = text.starts_with("O-O-O");
    if (!onlyMarks(text.substr(isLong ? 5 : 3))) return refused(noMove);
    MoveList list;
    list.count = 0;
    generateCastlings(gamePosition, list);
    for (i32 i = 0; i < list.count; ++i) {
        const Move move = list.moves[i];
        if (moveCastling(move) == (isLong ? longCastling : shortCastling) && leavesKingSafe<Us>(move))
            return found(move);
    }
    return refused(noMove);
}

template <Color Us>
Reading readPawnMove(std::string_view text) {
    using S = Side<Us>;
    const Position& p = gamePosition;
    int from;
    int to;
    std::size_t next;
    if (charAt(text, 1) == 'x') {
        if (!isFile(charAt(text, 2))) return refused(noFile);
        if (!isRank(charAt(text, 3))) return refused(noRank);
        to = squareOf(text[2], text[3]);
        from = makeSquare(text[0] - 'a', rankOf(to - S::up));
        if (fileOf(from) == fileOf(to)) return refused(noMove);
        next = 4;
    } else {
        if (!isRank(charAt(text, 1))) return refused(neitherRankNorCapture);
        to = squareOf(text[0], text[1]);
        from = to - S::up;
        if (S::relativeRank(to) == 3 && p.board[from] != S::pawn) from -= S::up;
        next = 2;
    }
    if (!onBoard(from) || p.board[from] != S::pawn) return refused(noMove);

    if (charAt(text, next) == '=') ++next;
    u8 promotion = manOfLetter<Us>(charAt(text, next));
    if (promotion) ++next;
    const bool promotes = S::relativeRank(to) == 7;
    if (promotion == S::king || (promotion && !promotes) || !onlyMarks(text.substr(next)))
        return refused(noMove);
    if (promotes && !promotion) promotion = S::queen;

    const Move move = makeMoveWord(from, to, promotion);
    return found(isLegalMove<Us>(move) ? move : nullMove);
}

// The legal move to the square of the first piece in a list on that file and rank; -1 stands for any.
template <Color Us>
Move firstLegalMove(const u8* list, int file, int rank, int to) {
    for (; *list != noSquare; ++list) {
        const int from = *list;
        if ((file >= 0 && fileOf(from) != file) || (rank >= 0 && rankOf(from) != rank)) continue;
        const Move move = makeMoveWord(from, to);
        if (isLegalMove<Us>(move)) return move;
    }
    return nullMove;
}

template <Color Us>
Reading readPieceMove(std::string_view text) {
    using S = Side<Us>;
    const u8 man = manOfLetter<Us>(charAt(text, 0));
    if (!man) return refused(noMan);
    while (isMark(text.back())) text.remove_suffix(1);
    if (!isRank(text.back())) return refused(noRank);
    const char fileOfTo = text[text.size() - 2];
    if (!isFile(fileOfTo)) return refused(noFile);
    const int to = squareOf(fileOfTo, text.back());

    int file = -1;
    int rank = -1;
    for (std::size_t i = text.size() - 3; i > 0; --i) {
        const char c = text[i];
        if (isRank(c)) {
            rank = c - '1';
        } else if (isFile(c)) {
            file = c - 'a';
        } else if (c != 'x') {
            return refused(noDisambiguation);
        }
    }

    const Position& p = gamePosition;
    switch (man) {
        case S::knight:
            return found(firstLegalMove<Us>(knightsOf<Us>(p), file, rank, to));
        case S::bishop:
            return found(firstLegalMove<Us>(bishopsOf<Us>(p), file, rank, to));
        case S::rook:
            return found(firstLegalMove<Us>(rooksOf<Us>(p), file, rank, to));
        case S::queen:
            return found(firstLegalMove<Us>(queensOf<Us>(p), file, rank, to));
        default: {
            const u8 king[] = {static_cast<u8>(kingOf<Us>(p)), noSquare};
            return found(firstLegalMove<Us>(king, file, rank, to));
        }
    }
}

template <Color Us>
Reading readMove(std::string_view text) {
    if (isFile(charAt(text, 0))) return readPawnMove<Us>(text);
    if (text.starts_with("O-O")) return readCastling<Us>(text);
    return readPieceMove<Us>(text);
}

}  // namespace

Move convertPGNMove2move(std::string_view text, const char** complaint) {
    const Reading reading = gamePosition.sideToMove == White ? readMove<White>(text) : readMove<Black>(text);
    if (complaint) *complaint = reading.complaint;
    return reading.move;
}

}  // namespace valku
