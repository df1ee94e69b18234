#include "chess/castling_rights.h"

#include "chess/side.h"

namespace valku {

namespace {

// Grants the right for a rook on `square`, if there is one and the king is on its home rank.
template <Color Us>
void grantRight(Position& p, int square) {
    using S = Side<Us>;
    const int king = kingOf<Us>(p);
    if (S::relativeRank(king) != 0 || p.board[square] != S::rook) return;
    p.state->castlings[square > king ? S::shortRight : S::longRight] = static_cast<u8>(square);
}

// Grants the right for the nearest rook of the king's rank in the direction of `step`, or for the outermost.
template <Color Us>
void grantRightOfRook(Position& p, int step, bool nearest) {
    using S = Side<Us>;
    const int king = kingOf<Us>(p);
    if (S::relativeRank(king) != 0) return;
    for (int square = king + step; onBoard(square); square += step) {
        if (p.board[square] != S::rook) continue;
        grantRight<Us>(p, square);
        if (nearest) return;
    }
}

template <Color Us>
bool isSoundRight(const Position& p, int right) {
    using S = Side<Us>;
    const int rook = p.state->castlings[right];
    if (rook == noSquare) return true;
    const int king = kingOf<Us>(p);
    return onBoard(rook) && S::relativeRank(king) == 0 && rankOf(rook) == rankOf(king) &&
           p.board[rook] == S::rook && (rook > king) == (right == S::shortRight);
}

// Grants the right for the rook in a corner, with a king on e1 or e8.
template <Color Us>
void grantCornerRight(Position& p, Square corner) {
    using S = Side<Us>;
    if (kingOf<Us>(p) == S::square(E1)) grantRight<Us>(p, S::square(corner));
}

}  // namespace

void readNormalCastlings(Position& p, std::string_view field) {
    for (const char c : field) {
        switch (c) {
            case 'K':
                grantCornerRight<White>(p, H1);
                break;
            case 'Q':
                grantCornerRight<White>(p, A1);
                break;
            case 'k':
                grantCornerRight<Black>(p, H1);
                break;
            case 'q':
                grantCornerRight<Black>(p, A1);
                break;
            default:
                break;
        }
    }
}

void readShredderCastlings(Position& p, std::string_view field) {
    for (const char c : field) {
        if (c >= 'A' && c <= 'H') {
            grantRight<White>(p, makeSquare(c - 'A', 0));
        } else if (c >= 'a' && c <= 'h') {
            grantRight<Black>(p, makeSquare(c - 'a', 7));
        } else if (c == 'K' || c == 'Q') {
            grantRightOfRook<White>(p, c == 'K' ? 1 : -1, false);
        } else if (c == 'k' || c == 'q') {
            grantRightOfRook<Black>(p, c == 'k' ? 1 : -1, false);
        }
    }
}

void deriveCastlings(Position& p, bool isChess960) {
    if (isChess960) {
        for (const int step : {-1, 1}) {
            grantRightOfRook<White>(p, step, true);
            grantRightOfRook<Black>(p, step, true);
        }
        return;
    }
    for (const Square corner : {A1, H1}) {
        grantCornerRight<White>(p, corner);
        grantCornerRight<Black>(p, corner);
    }
}

bool areCastlingsSound(const Position& p) {
    return isSoundRight<White>(p, whiteLong) && isSoundRight<White>(p, whiteShort) &&
           isSoundRight<Black>(p, blackLong) && isSoundRight<Black>(p, blackShort);
}

std::string castlingField(const Position& p, bool isChess960) {
    struct Right {
        int index;
        int normalSquare;
        char letter;
    };
    constexpr Right normalOrder[] = {
        {whiteShort, H1, 'K'}, {whiteLong, A1, 'Q'}, {blackShort, H8, 'k'}, {blackLong, A8, 'q'}};
    std::string field;
    if (isChess960) {
        for (const int right : {whiteLong, whiteShort, blackLong, blackShort}) {
            const int square = p.state->castlings[right];
            if (square == noSquare) continue;
            field += static_cast<char>((right < blackLong ? 'A' : 'a') + fileOf(square));
        }
    } else {
        for (const Right& right : normalOrder) {
            if (p.state->castlings[right.index] == right.normalSquare) field += right.letter;
        }
    }
    return field.empty() ? "-" : field;
}

}  // namespace valku
