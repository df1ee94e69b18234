#pragma once

#include "chess/piece_values.h"
#include "chess/side.h"
#include "chess/tables.h"
#include "eval/eval_context.h"
#include "eval/eval_tables.h"
#include "eval/weights.h"

// Rooks, bishops, knights and the threats against pieces. Terms are hundredths of a pawn from the view of Us.
// Only the first two pieces of a kind count, and the first queen.

namespace valku {

constexpr i32 kingThreat = 10000;
constexpr i32 rookBehindEnemyPawn = 8;
constexpr i32 bishopColorUnit = 2;  // for each own pawn more or less than three on the bishop's color

template <Color Us>
[[gnu::always_inline]] inline bool attackedByPawn(int square) {
    return pawnAttacksOf<~Us>(searchPosition)[square] != 0;
}

template <Color Us>
[[gnu::always_inline]] inline bool attackedByKnight(int square) {
    return (knightAttacks[square] & knightsBBOf<~Us>(searchPosition)) != 0;
}

// Records a threat if a rook or queen of Us is attacked by a pawn or knight.
template <Color Us>
[[gnu::always_inline]] inline void addThreat(EvalContext& context, int square, i32 value) {
    if (attackedByPawn<Us>(square)) {
        context.threatened[Us].add(value - pawnValue);
    } else if (attackedByKnight<Us>(square)) {
        context.threatened[Us].add(value - knightValue);
    }
}

template <Color Us>
[[gnu::always_inline]] inline void queenThreat(EvalContext& context) {
    const int queen = queensOf<Us>(searchPosition)[0];
    if (queen != noSquare) addThreat<Us>(context, queen, queenValue);
}

// A check by a pawn or knight must be answered, so it is always the largest threat.
template <Color Us>
[[gnu::always_inline]] inline void kingThreatened(EvalContext& context) {
    const int king = kingOf<Us>(searchPosition);
    if (attackedByPawn<Us>(king) || attackedByKnight<Us>(king)) context.threatened[Us].add(kingThreat);
}

// A rook facing an enemy pawn, with its retreat blocked by a man close behind it. Worse if it has no room
// towards the middle of its rank either.
template <Color Us>
[[gnu::always_inline]] inline i32 narrowedRookTerm(int rook) {
    constexpr int up = Side<Us>::up;
    const auto hinders = [](int square) { return !stands(empty, square) && !stands(Side<Us>::rook, square); };

    const bool narrowed = hinders(rook - up) || (Side<Us>::relativeRank(rook) >= 2 && hinders(rook - 2 * up));
    if (!narrowed) return 0;
    const int inward = fileOf(rook) <= 3 ? 1 : -1;
    const bool roomBeside = stands(empty, rook + inward) && stands(empty, rook + 2 * inward);
    return roomBeside ? -narrowedRook : -3 * narrowedRook;
}

template <Color Us>
[[gnu::always_inline]] inline i32 rookTerm(EvalContext& context, int rook) {
    constexpr Color Them = ~Us;
    const Position& position = searchPosition;
    const int file = fileOf(rook);
    const int enemyRear = rearOf<Them>(context.pawns)[file];
    i32 score = 0;

    addThreat<Us>(context, rook, rookValue);

    if (pawnsOnFileOf<Them>(position)[file] == 0) {
        if (pawnsOnFileOf<Us>(position)[file] == 0) score += rookOnOpenLine;
    } else if (isAhead<Us>(rook, enemyRear)) {
        score += rookBehindEnemyPawn;
    }

    const int rank = Side<Us>::relativeRank(rook);
    if (rank != 0) {
        if (rank == 6 && Side<Us>::relativeRank(kingOf<Them>(position)) == 7) score += rookOn7th;
        if (isAhead<Us>(enemyRear, rook)) score += narrowedRookTerm<Us>(rook);
    }
    return score;
}

// True if a rook of Us is trapped in the corner by its king, which has moved to that wing. The squares are
// given for the kingside. The first of them that holds a rook decides; a rook that may still castle does not
// count.
template <Color Us, bool Kingside>
[[gnu::always_inline]] inline bool isRookShutIn() {
    const auto at = [](int square) { return Side<Us>::square(Kingside ? square : square ^ 7); };
    const auto rookOn = [at](int square) { return stands(Side<Us>::rook, at(square)); };
    const auto pawnOn = [at](int square) { return stands(Side<Us>::pawn, at(square)); };
    const int castlingRook =
        searchPosition.state->castlings[Kingside ? Side<Us>::shortRight : Side<Us>::longRight];

    if (rookOn(G2)) return pawnOn(F2) && pawnOn(G3);
    if (rookOn(H2)) return (pawnOn(F2) || pawnOn(G2)) && pawnOn(H3);
    if (rookOn(G1) && castlingRook != at(G1)) return pawnOn(G2) || pawnOn(G3);
    if (rookOn(H1) && castlingRook != at(H1)) return pawnOn(H2) || pawnOn(H3);
    return false;
}

template <Color Us>
[[gnu::always_inline]] inline i32 trappedRookTerm() {
    const int king = Side<Us>::square(kingOf<Us>(searchPosition));
    bool trapped = false;
    if (king == F1 || king == G1) trapped = isRookShutIn<Us, true>();
    if (king == B1 || king == C1) trapped = isRookShutIn<Us, false>();
    return trapped ? -trappedRook : 0;
}

template <Color Us>
[[gnu::always_inline]] inline i32 rookTerms(EvalContext& context) {
    const auto& rooks = rooksOf<Us>(searchPosition);
    if (rooks[0] == noSquare) return 0;
    i32 score = rookTerm<Us>(context, rooks[0]);
    if (rooks[1] != noSquare) {
        score += rookTerm<Us>(context, rooks[1]);
        if (fileOf(rooks[0]) == fileOf(rooks[1])) score += doubledRooks;
    }
    return score + trappedRookTerm<Us>();
}

// True if an enemy pawn of that file attacks `square` or may do so later.
template <Color Us>
[[gnu::always_inline]] inline bool pawnMayAttackFrom(const EvalContext& context, int file, int square) {
    return isAhead<Us>(rearOf<~Us>(context.pawns)[file], square);
}

// True if a man is guarded by a pawn or shielded by an enemy pawn in front of it.
template <Color Us>
[[gnu::always_inline]] inline bool isPropped(int square) {
    return stands(Side<~Us>::pawn, square + Side<Us>::up) || pawnAttacksOf<Us>(searchPosition)[square] != 0;
}

// An outpost counts in full if two pawns guard it, or if no enemy minor piece can capture it, a single bishop
// being judged by the parity of its file only; otherwise half.
template <Color Us>
[[gnu::always_inline]] inline i32 outpostTerm(int square, i32 value) {
    const Position& position = searchPosition;
    const auto& enemyBishops = bishopsOf<~Us>(position);
    const bool cannotBeTraded = knightsOf<~Us>(position)[0] == noSquare &&
                                (enemyBishops[0] == noSquare ||
                                 (enemyBishops[1] == noSquare && ((enemyBishops[0] ^ square) & 1) != 0));
    return pawnAttacksOf<Us>(position)[square] == 2 || cannotBeTraded ? value : value / 2;
}

template <Color Us>
[[gnu::always_inline]] inline i32 bishopTerm(EvalContext& context, int bishop) {
    constexpr int west = Side<Us>::up - 1, east = Side<Us>::up + 1;
    const int file = fileOf(bishop);
    i32 score = bishopSquare.at<Us>(bishop);

    ++context.minorsOnFile[file];

    // True for an own pawn and off the board: without the flags of man, pawn and own color nothing is left of
    // those, but of everything else.
    const auto shut = [](int square) {
        constexpr u8 otherFlags = 0x7F & ~(pawnFlag | Side<Us>::flag);
        return (searchPosition.board[square] & otherFlags) == 0;
    };
    const bool atHome = Side<Us>::relativeRank(bishop) <= 2;
    const bool westClosed = (atHome && file <= 2) || shut(bishop + west) || shut(bishop + 2 * west);
    if (westClosed) {
        const bool eastClosed = (atHome && file >= 5) || shut(bishop + east) || shut(bishop + 2 * east);
        if (eastClosed) score -= badBishop;
    }

    const int pawnColors = pawnColoursOf<Us>(context.pawns);
    const int pawnsOnColor = isDarkSquare(bishop) ? pawnColors & 15 : pawnColors >> 4;
    score += bishopColorUnit * (3 - pawnsOnColor);

    if (attackedByPawn<Us>(bishop)) context.threatened[Us].add(bishopValue - pawnValue);

    const i32 outpost = bishopOutpost.at<Us>(bishop);
    if (outpost != 0 && isPropped<Us>(bishop) && !pawnMayAttackFrom<Us>(context, file - 1, bishop) &&
        !pawnMayAttackFrom<Us>(context, file + 1, bishop)) {
        score += outpostTerm<Us>(bishop, outpost);
    }
    return score;
}

template <Color Us>
[[gnu::always_inline]] inline i32 trappedBishopTerm() {
    const auto trapped = [](int bishop, int pawn) {
        return stands(Side<Us>::bishop, Side<Us>::square(bishop)) &&
               stands(Side<~Us>::pawn, Side<Us>::square(pawn));
    };
    return (trapped(A7, B6) ? -trappedBishop : 0) + (trapped(H7, G6) ? -trappedBishop : 0);
}

template <Color Us>
[[gnu::always_inline]] inline i32 bishopTerms(EvalContext& context) {
    const auto& bishops = bishopsOf<Us>(searchPosition);
    if (bishops[0] == noSquare) return 0;
    i32 score = bishopTerm<Us>(context, bishops[0]);
    if (bishops[1] != noSquare) score += bishopTerm<Us>(context, bishops[1]) + pairOfBishops;
    return score + trappedBishopTerm<Us>();
}

template <Color Us>
[[gnu::always_inline]] inline i32 knightTerm(EvalContext& context, int knight) {
    constexpr int west = Side<Us>::up - 1, east = Side<Us>::up + 1;
    const int file = fileOf(knight);
    i32 score = knightSquare.at<Us>(knight);

    ++context.minorsOnFile[file];
    if (attackedByPawn<Us>(knight)) context.threatened[Us].add(knightValue - pawnValue);

    // An own pawn beside the square in front stops the enemy pawn of its file.
    const i32 outpost = knightOutpost.at<Us>(knight);
    if (outpost != 0 && isPropped<Us>(knight) &&
        (!pawnMayAttackFrom<Us>(context, file - 1, knight) || stands(Side<Us>::pawn, knight + west)) &&
        (!pawnMayAttackFrom<Us>(context, file + 1, knight) || stands(Side<Us>::pawn, knight + east))) {
        score += outpostTerm<Us>(knight, outpost);
    }
    return score;
}

template <Color Us>
[[gnu::always_inline]] inline i32 knightTerms(EvalContext& context) {
    const auto& knights = knightsOf<Us>(searchPosition);
    if (knights[0] == noSquare) return 0;
    i32 score = knightTerm<Us>(context, knights[0]);
    if (knights[1] != noSquare) score += knightTerm<Us>(context, knights[1]);
    return score;
}

}  // namespace valku
