#include "chess/attacks.h"

#include <cstdlib>

#include "chess/make_move.h"
#include "chess/side.h"
#include "chess/steps.h"
#include "chess/tables.h"

namespace valku {

namespace {

// The flag of the pieces that move along a step of directionTable.
constexpr u8 lineFlag(int step) {
    const int distance = step < 0 ? -step : step;
    return distance == 15 || distance == 17 ? diagonalFlag : straightFlag;
}

// The first man on the ray from `square` in steps of `step`, or offBoard.
[[gnu::always_inline]] inline u8 firstOnRay(const Position& p, int square, int step) {
    do {
        square += step;
    } while (p.board[square] == empty);
    return p.board[square];
}

[[gnu::always_inline]] inline bool emptyBetween(const Position& p, int from, int to, int step) {
    for (int square = from + step; square != to; square += step) {
        if (p.board[square] != empty) return false;
    }
    return true;
}

[[gnu::always_inline]] inline bool areKnightMoveApart(int a, int b) {
    const int files = std::abs(fileOf(a) - fileOf(b));
    const int ranks = std::abs(rankOf(a) - rankOf(b));
    return (files == 1 && ranks == 2) || (files == 2 && ranks == 1);
}

template <Color By>
[[gnu::always_inline]] inline bool rayAttack(const Position& p, int square, const int (&steps)[4],
                                             u8 lineFlagOfMen) {
    const u8 attacker = static_cast<u8>(manFlag | lineFlagOfMen | colorFlag(By));
    for (const int step : steps) {
        if ((firstOnRay(p, square, step) & attacker) == attacker) return true;
    }
    return false;
}

// The tests that cost one look-up come first; rays are walked only if a piece of that kind stands on a line
// with the square.
template <Color By>
[[gnu::always_inline]] inline bool isAttackedBy(const Position& p, int square) {
    if (pawnAttacksOf<By>(p)[square]) return true;
    if (knightAttacks[square] & knightsBBOf<By>(p)) return true;
    if (kingDistance(kingOf<By>(p), square) <= 1) return true;
    if ((bishopRays[square] & diagonalBBOf<By>(p)) &&
        rayAttack<By>(p, square, Steps<White>::bishop, diagonalFlag)) {
        return true;
    }
    return (rookRays[square] & straightBBOf<By>(p)) &&
           rayAttack<By>(p, square, Steps<White>::rook, straightFlag);
}

template <Color Us>
[[gnu::always_inline]] inline bool isPseudoLegalPawnMove(const Position& p, int from, int to) {
    using S = Side<Us>;
    const int step = to - from;
    if (step == S::up) return p.board[to] == empty;
    if (step == 2 * S::up) {
        return p.board[to] == empty && p.board[to - S::up] == empty && (Us == White ? from < 24 : from >= 96);
    }
    if (step != S::up - 1 && step != S::up + 1) return false;
    return isManOf(S::Them, p.board[to]) || to == p.state->epField;
}

template <Color Us>
[[gnu::always_inline]] inline bool isPseudoLegalOf(const Position& p, Move move) {
    using S = Side<Us>;
    if (move == nullMove || moveCastling(move) != noCastling) return false;
    const int from = moveFrom(move);
    const int to = moveTo(move);
    if (from > lastSquare || to > lastSquare || !onBoard(from) || !onBoard(to)) return false;
    const u8 mover = p.board[from];
    const u8 promotion = movePromotion(move);
    if (promotion && (!(mover & pawnFlag) || !isManOf(Us, promotion))) return false;
    if (isManOf(Us, p.board[to])) return false;
    switch (mover) {
        case S::pawn:
            return isPseudoLegalPawnMove<Us>(p, from, to);
        case S::knight:
            return areKnightMoveApart(from, to);
        case S::king:
            return kingDistance(from, to) == 1;
        case S::bishop:
        case S::rook:
        case S::queen: {
            const int step = directionTable[to - from];
            return step != 0 && (mover & lineFlag(step)) && emptyBetween(p, from, to, step);
        }
        default:
            return false;
    }
}

template <Color Us>
[[gnu::always_inline]] inline bool givesDirectCheckOf(Move move) {
    using S = Side<Us>;
    const Position& p = searchPosition;
    const int to = moveTo(move);
    const int king = kingOf<S::Them>(p);
    const u8 mover = p.board[moveFrom(move)];
    switch (mover) {
        case S::pawn:
            return king == to + S::up - 1 || king == to + S::up + 1;
        case S::knight:
            return areKnightMoveApart(to, king);
        case S::bishop:
        case S::rook:
        case S::queen: {
            const int step = directionTable[king - to];
            return step != 0 && (mover & lineFlag(step)) && emptyBetween(p, to, king, step);
        }
        default:
            return false;
    }
}

template <Color Us>
[[gnu::always_inline]] inline bool givesDiscoveredCheckOf(Move move) {
    const Position& p = searchPosition;
    const int from = moveFrom(move);
    const int king = kingOf<~Us>(p);
    const int step = directionTable[king - from];
    if (step == 0) return false;
    const int moveStep = directionTable[moveTo(move) - from];
    if (moveStep == step || moveStep == -step) return false;
    if (!emptyBetween(p, from, king, step)) return false;
    const u8 uncovered = firstOnRay(p, from, -step);
    return isManOf(Us, uncovered) && (uncovered & lineFlag(step));
}

}  // namespace

bool isAttackedByWhite(const Position& position, int square) {
    return isAttackedBy<White>(position, square);
}
bool isAttackedByBlack(const Position& position, int square) {
    return isAttackedBy<Black>(position, square);
}

bool inCheck() {
    return searchPosition.sideToMove == White ? isAttackedBy<Black>(searchPosition, searchPosition.whiteKing)
                                              : isAttackedBy<White>(searchPosition, searchPosition.blackKing);
}

bool inCheck(const Position& position) {
    return position.sideToMove == White ? isAttackedBy<Black>(position, position.whiteKing)
                                        : isAttackedBy<White>(position, position.blackKing);
}

bool leftKingInCheck() {
    return searchPosition.sideToMove == White ? isAttackedBy<White>(searchPosition, searchPosition.blackKing)
                                              : isAttackedBy<Black>(searchPosition, searchPosition.whiteKing);
}

bool leftKingInCheck(const Position& position) {
    return position.sideToMove == White ? isAttackedBy<White>(position, position.blackKing)
                                        : isAttackedBy<Black>(position, position.whiteKing);
}

bool isPseudoLegal(Move move) {
    return isPseudoLegal(searchPosition, move);
}

bool isPseudoLegal(const Position& position, Move move) {
    return position.sideToMove == White ? isPseudoLegalOf<White>(position, move)
                                        : isPseudoLegalOf<Black>(position, move);
}

bool givesDirectCheck(Move move) {
    return searchPosition.sideToMove == White ? givesDirectCheckOf<White>(move)
                                              : givesDirectCheckOf<Black>(move);
}

bool givesDiscoveredCheck(Move move) {
    return searchPosition.sideToMove == White ? givesDiscoveredCheckOf<White>(move)
                                              : givesDiscoveredCheckOf<Black>(move);
}

bool isRepetition() {
    const StateRecord* const current = searchPosition.state;
    const auto stacked = current - searchPosition.states;
    const auto furthest = stacked < current->fiftyMoves ? stacked : current->fiftyMoves;
    for (auto back = decltype(furthest){2}; back <= furthest; back += 2) {
        const StateRecord& earlier = current[-back];
        if (earlier.hashLow == current->hashLow && earlier.hashHigh == current->hashHigh) return true;
    }
    return false;
}

bool isLegal(const Position& position, Move move) {
    Position copy(position);
    makeMove(copy, move);
    return !leftKingInCheck(copy);
}

i32 countLegalMoves(Position& position, const MoveList& list) {
    i32 legal = 0;
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(position, list.moves[i]);
        if (!leftKingInCheck(position)) ++legal;
        unmakeMove(position);
    }
    return legal;
}

}  // namespace valku
