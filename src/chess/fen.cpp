#include "chess/fen.h"

#include <array>

#include "chess/attacks.h"
#include "chess/castling_rights.h"
#include "chess/move_text.h"
#include "chess/side.h"
#include "platform/text_scan.h"

namespace valku {

SharedFlag chess960{false};
bool arenaCastlingNotation = false;
bool shredderFen = false;

const char* const startPositionFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

namespace {

struct PieceLetter {
    char letter;
    u8 code;
};

constexpr std::array<PieceLetter, 12> pieceLetters{{
    {'P', WhitePawn},
    {'N', WhiteKnight},
    {'B', WhiteBishop},
    {'R', WhiteRook},
    {'Q', WhiteQueen},
    {'K', WhiteKing},
    {'p', BlackPawn},
    {'n', BlackKnight},
    {'b', BlackBishop},
    {'r', BlackRook},
    {'q', BlackQueen},
    {'k', BlackKing},
}};

constexpr std::array<u8, 128> codesByLetter = [] {
    std::array<u8, 128> codes{};
    for (const PieceLetter& row : pieceLetters) codes[static_cast<std::size_t>(row.letter)] = row.code;
    return codes;
}();

char letterOfCode(u8 code) {
    for (const PieceLetter& row : pieceLetters) {
        if (row.code == code) return row.letter;
    }
    return '?';
}

// The fields of a FEN; missing ones are empty and count as "-".
struct Fields {
    std::string_view placement, side, castling, enPassant, fiftyMoves;

    explicit Fields(std::string_view text)
        : placement(takeWord(text, isWhiteSpace)),
          side(takeWord(text, isWhiteSpace)),
          castling(takeWord(text, isWhiteSpace)),
          enPassant(takeWord(text, isWhiteSpace)),
          fiftyMoves(takeWord(text, isWhiteSpace)) {}

    bool areEnough() const { return !side.empty(); }
};

bool readPlacement(Position& p, std::string_view field) {
    int file = 0;
    int rank = 7;
    for (const char c : field) {
        if (rank == 0 && file > 7) return false;
        if (c >= '1' && c <= '9') {
            file += c - '0';
        } else if (c == '/') {
            file = 0;
            if (--rank < 0) return false;
        } else {
            const u8 code = codeOfLetter(c);
            if (code == offBoard || file > 7) return false;
            if ((code & pawnFlag) && (rank == 0 || rank == 7)) return false;
            if (!placeMan(p, code, makeSquare(file, rank))) return false;
            ++file;
        }
    }
    return rank == 0 && file > 7;
}

template <Color Us>
bool isEnPassantFieldOf(const Position& p, int field) {
    using S = Side<Us>;
    return onBoard(field) && S::relativeRank(field) == 5 && p.board[field] == empty &&
           p.board[field - S::up] == Side<S::Them>::pawn;
}

void readEnPassantField(Position& p, std::string_view field) {
    const int square = textToSquare(field);
    if (isEnPassantField(p, square)) p.state->epField = static_cast<u8>(square);
}

u8 readFiftyMoves(std::string_view field) {
    constexpr u8 most = 255;
    return takeNumber<u8>(field, most).value_or(0);
}

// Sets the men and the side to move. False if the placement is bad or a king is missing.
bool setUpMen(Position& p, const Fields& fields) {
    clearPosition(p);
    if (!fields.areEnough() || !readPlacement(p, fields.placement)) return false;
    p.sideToMove = fields.side.front() == 'w' ? White : Black;
    return p.whiteKing != noSquare && p.blackKing != noSquare;
}

bool setUp(Position& p, const Fields& fields) {
    if (!setUpMen(p, fields)) return false;
    if (!chess960) {
        readNormalCastlings(p, fields.castling);
    } else if (shredderFen && !arenaCastlingNotation) {
        readShredderCastlings(p, fields.castling);
    } else {
        deriveCastlings(p, true);
    }
    readEnPassantField(p, fields.enPassant);
    if (!fields.fiftyMoves.empty()) p.state->fiftyMoves = readFiftyMoves(fields.fiftyMoves);
    computeDerived(p);
    return !leftKingInCheck(p);
}

std::string placementField(const Position& p) {
    std::string field;
    for (int rank = 7; rank >= 0; --rank) {
        int gap = 0;
        for (int file = 0; file < 8; ++file) {
            const u8 code = p.board[makeSquare(file, rank)];
            if (code == empty) {
                ++gap;
                continue;
            }
            if (gap) field += static_cast<char>('0' + gap);
            gap = 0;
            field += letterOfCode(code);
        }
        if (gap) field += static_cast<char>('0' + gap);
        if (rank) field += '/';
    }
    return field;
}

}  // namespace

bool isEnPassantField(const Position& p, int field) {
    return p.sideToMove == White ? isEnPassantFieldOf<White>(p, field) : isEnPassantFieldOf<Black>(p, field);
}

u8 codeOfLetter(char letter) {
    const auto index = static_cast<u8>(letter);
    return index < codesByLetter.size() ? codesByLetter[index] : offBoard;
}

bool readFen(std::string_view text) {
    const Position saved(gamePosition);
    if (!setUp(gamePosition, Fields(text))) {
        gamePosition = saved;
        return false;
    }
    droppedGameMoves = 0;
    return true;
}

bool readFenMen(std::string_view text, Position& p) {
    if (!setUpMen(p, Fields(text))) return false;
    computePawnAttacks(p);
    computeBitboards(p);
    return !leftKingInCheck(p);
}

std::string writeFen(const Position& p) {
    const int moves = stackedMoves(p) + (&p == &gamePosition ? droppedGameMoves : 0);
    const int epField = p.state->epField;
    return placementField(p) + (p.sideToMove == White ? " w " : " b ") + castlingField(p, chess960) + " " +
           (epField == noEpField ? "-" : squareText(epField)) + " " + std::to_string(p.state->fiftyMoves) +
           " " + std::to_string(moves / 2 + 1);
}

std::string writeFen() {
    return writeFen(gamePosition);
}

namespace {

int mirrorRight(int square) {
    return square == noSquare ? noSquare : mirrorRank(square);
}

}  // namespace

void mirrorPosition() {
    const Position source(gamePosition);
    Position& p = gamePosition;
    clearPosition(p);
    // Each list keeps the order of the other color's, so that a search of the mirrored position does the
    // mirrored work.
    const auto placeList = [&](const u8* list, u8 code) {
        for (; *list != noSquare; ++list) placeMan(p, code, mirrorRank(*list));
    };
    placeList(source.blackPawns, WhitePawn);
    placeList(source.blackKnights, WhiteKnight);
    placeList(source.blackBishops, WhiteBishop);
    placeList(source.blackRooks, WhiteRook);
    placeList(source.blackQueens, WhiteQueen);
    placeList(source.whitePawns, BlackPawn);
    placeList(source.whiteKnights, BlackKnight);
    placeList(source.whiteBishops, BlackBishop);
    placeList(source.whiteRooks, BlackRook);
    placeList(source.whiteQueens, BlackQueen);
    placeMan(p, WhiteKing, mirrorRank(source.blackKing));
    placeMan(p, BlackKing, mirrorRank(source.whiteKing));
    p.sideToMove = source.sideToMove ^ 1;
    const StateRecord& old = *source.state;
    p.state->epField = static_cast<u8>(old.epField == noEpField ? noEpField : mirrorRank(old.epField));
    p.state->fiftyMoves = old.fiftyMoves;
    for (int right = 0; right < 4; ++right)
        p.state->castlings[right] = static_cast<u8>(mirrorRight(old.castlings[right ^ 2]));
    computeDerived(p);
    droppedGameMoves = 0;
}

}  // namespace valku
