#pragma once

#include <algorithm>
#include <cstdlib>

#include "chess/side.h"
#include "eval/eval_context.h"
#include "eval/eval_tables.h"

// Passed pawns from the fourth rank on. Terms are hundredths of a pawn from the view of Us; ranks are
// relative.

namespace valku {

constexpr i32 fullPasser = 128;  // a pawn that nothing blocks
constexpr i32 mostBlock = 85;    // the most that blocking takes away
constexpr i32 rookBehindPasser = 8;
constexpr i32 passersAgainstRooks = 200;

// True if Us has only king and pawns.
template <Color Us>
[[gnu::always_inline]] inline bool hasOnlyPawns() {
    return menOf<Us>(searchPosition) == pawnCountOf<Us>(searchPosition) + 1;
}

// The part of a passed pawn's value that the enemy king takes away, in 128ths; none from behind the pawn.
[[gnu::always_inline]] inline i32 kingBlock(int rank, int kingRank, int fileDistance) {
    if (kingRank < rank) return 0;
    return passerKingBlock[(kingRank == rank ? 7 : 0) + 7 * fileDistance + 7 - rank];
}

template <Color Us>
[[gnu::always_inline]] inline bool hasRookBehind(const EvalContext& context, int pawn) {
    const int file = fileOf(pawn);
    if (rearOf<Us>(context.pawns)[file] != pawn) return false;
    const auto& rooks = rooksOf<Us>(searchPosition);
    for (int i = 0; i < 2 && rooks[i] != noSquare; ++i) {
        if (fileOf(rooks[i]) == file && isAhead<Us>(pawn, rooks[i])) return true;
    }
    return false;
}

template <Color Us>
[[gnu::noinline]] inline i32 passedPawnTerm(EvalContext& context, int pawn) {
    constexpr Color Them = ~Us;
    constexpr int up = Side<Us>::up;
    const Position& position = searchPosition;
    const int file = fileOf(pawn);
    const int rank = Side<Us>::relativeRank(pawn);
    const int king = kingOf<Us>(position);
    const int enemyKing = kingOf<Them>(position);
    const int enemyKingRank = Side<Us>::relativeRank(enemyKing);
    const int enemyKingFiles = std::abs(fileOf(enemyKing) - file);

    i32 block = kingBlock(rank, enemyKingRank, enemyKingFiles);
    int ownMenAhead = 0;
    for (int square = pawn + up; onBoard(square); square += up) {
        const u8 man = position.board[square];
        block += pathObstacle.at<Us>(man);
        ownMenAhead += isManOf(Us, man);
    }
    i32 score = (fullPasser - std::min(block, mostBlock)) * passedPawnValue[rank] / fullPasser;

    const int support = Side<Us>::relativeRank(king) - rank + 1;
    if (std::abs(fileOf(king) - file) <= 1 && support >= 0 && support <= 3) {
        score += kingSupportTable[rank][support];
    }
    if (hasRookBehind<Us>(context, pawn)) score += rookBehindPasser * (rank - 1);

    const auto ownPawnOn = [](int square) { return stands(Side<Us>::pawn, square); };
    if (ownPawnOn(pawn - up - 1) || ownPawnOn(pawn - up + 1) || ownPawnOn(pawn - 1) || ownPawnOn(pawn + 1)) {
        score += connectedPasserValue[rank];
    }

    // Against a king with pawns only: the rule of the square.
    if (hasOnlyPawns<Them>()) {
        const int moves = 7 - rank + ownMenAhead + (position.sideToMove == Them);
        const int reach = std::max(enemyKingFiles, 7 - enemyKingRank);
        if (moves < reach) context.race[Us] = std::min(context.race[Us], moves);
    }
    return score;
}

// Also sets context.race of Us.
template <Color Us>
[[gnu::always_inline]] inline i32 passedPawnTerms(EvalContext& context) {
    const int count = passerCountOf<Us>(context.pawns);
    i32 score = 0;
    for (int i = 0; i < count; ++i) score += passedPawnTerm<Us>(context, passersOf<Us>(context.pawns)[i]);
    return score;
}

// Two connected passed pawns far advanced win against rooks if the enemy king comes too late.
template <Color Us>
[[gnu::always_inline]] inline i32 connectedPassersTerm(const EvalContext& context) {
    constexpr Color Them = ~Us;
    constexpr int up = Side<Us>::up;
    const Position& position = searchPosition;
    const int count = passerCountOf<Us>(context.pawns);
    if (count < 2) return 0;
    if (rookCountOf<Them>(position) != menOf<Them>(position) - pawnCountOf<Them>(position) - 1) return 0;

    const int enemyKing = kingOf<Them>(position);
    const int enemyKingRank = Side<Us>::relativeRank(enemyKing);
    const auto ownPawnOn = [](int square) { return stands(Side<Us>::pawn, square); };
    for (int i = 0; i < count; ++i) {
        const int pawn = passersOf<Us>(context.pawns)[i];
        const int rank = Side<Us>::relativeRank(pawn);
        const bool connected = (rank > 4 && (ownPawnOn(pawn - 1) || ownPawnOn(pawn + 1))) ||
                               (rank == 6 && (ownPawnOn(pawn - up - 1) || ownPawnOn(pawn - up + 1)));
        if (!connected) continue;
        const int moves = 7 - rank + (position.sideToMove == Them);
        if (moves < rank - enemyKingRank || moves < std::abs(fileOf(enemyKing) - fileOf(pawn))) {
            return passersAgainstRooks;
        }
    }
    return 0;
}

}  // namespace valku
