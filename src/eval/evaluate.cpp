#include "eval/evaluate.h"

#include "chess/side.h"
#include "eval/endgame.h"
#include "eval/eval_context.h"
#include "eval/eval_tables.h"
#include "eval/game_phase.h"
#include "eval/king_safety.h"
#include "eval/passed_pawns.h"
#include "eval/pawn_table.h"
#include "eval/pieces.h"
#include "eval/weights.h"

// Every term is a template on the color from whose view it is. Middlegame and endgame have separate terms;
// the score is one or the other, not interpolated between the two. This is the hottest function of the
// engine, so nearly everything is inlined into it; the few loops that are used in several places are
// functions of their own, which is faster than copies of them.

namespace valku {

i32 mobilityBalance;

namespace {

constexpr i32 castlingRightValue = 8;  // for each right that is left

template <Color Us>
[[gnu::always_inline]] inline i32 blockedCentralPawnTerm() {
    const auto blocked = [](int home) {
        const int square = Side<Us>::square(home);
        return stands(Side<Us>::pawn, square) && !stands(empty, square + Side<Us>::up);
    };
    return -blockedCentralPawn * (blocked(D2) + blocked(E2));
}

template <Color Us>
[[gnu::always_inline]] inline i32 castlingTerm() {
    const auto& castlings = searchPosition.state->castlings;
    return castlingRightValue *
           ((castlings[Side<Us>::longRight] != noSquare) + (castlings[Side<Us>::shortRight] != noSquare));
}

template <Color Us>
[[gnu::always_inline]] inline i32 middlegameKingTerms(const EvalContext& context) {
    return kingAttackTerm<Us>(context) + kingPawnTerm<Us>(context) +
           kingMiddlegame.at<Us>(kingOf<Us>(searchPosition)) + castlingTerm<Us>();
}

[[gnu::always_inline]] inline i32 middlegameTerms(EvalContext& context) {
    countKingAttack<White>(context);
    countKingAttack<Black>(context);
    return context.pawns.middlegameScore + middlegameKingTerms<White>(context) -
           middlegameKingTerms<Black>(context);
}

template <Color Us>
[[gnu::always_inline]] inline i32 endgameSideTerms(const EvalContext& context) {
    const Position& position = searchPosition;
    i32 score = connectedPassersTerm<Us>(context) + kingEndgame.at<Us>(kingOf<Us>(position));
    if (knightCountOf<Us>(position) >= 2) score -= twoKnightsMalus;
    // Bishops like pawns on both wings, knights do not.
    score += 2 * (bishopCountOf<Us>(position) - knightCountOf<Us>(position)) * (context.pawns.pawnSpread - 5);
    return score;
}

template <Color Us>
[[gnu::always_inline]] inline bool aloneHasRooks() {
    return rooksOf<Us>(searchPosition)[0] != noSquare && rooksOf<~Us>(searchPosition)[0] == noSquare;
}

[[gnu::always_inline]] inline i32 endgameTerms(const EvalContext& context) {
    const Position& position = searchPosition;
    i32 score =
        context.pawns.endgameScore + endgameSideTerms<White>(context) - endgameSideTerms<Black>(context);
    if (position.whiteQueens[0] == noSquare && position.blackQueens[0] == noSquare) {
        if (aloneHasRooks<White>()) score += rookAgainstNoRook;
        if (aloneHasRooks<Black>()) score -= rookAgainstNoRook;
    }
    return score;
}

template <Color Us>
[[gnu::always_inline]] inline i32 pieceTerms(EvalContext& context) {
    queenThreat<Us>(context);
    kingThreatened<Us>(context);
    return rookTerms<Us>(context) + bishopTerms<Us>(context) + knightTerms<Us>(context);
}

}  // namespace

i32 evaluate() {
    const Position& position = searchPosition;
    EvalContext context{.pawns = *probePawnTable()};

    i32 score = position.whiteMaterial - position.blackMaterial;
    if (context.pawns.centralPawnsAtHome) {
        score += blockedCentralPawnTerm<White>() - blockedCentralPawnTerm<Black>();
    }
    score += pieceTerms<White>(context) - pieceTerms<Black>(context);
    score += position.sideToMove == White ? rightToMove : -rightToMove;
    score += mobilityBalance;
    score += passedPawnTerms<White>(context) - passedPawnTerms<Black>(context);

    if (isMiddlegame(position)) {
        score += middlegameTerms(context);
    } else {
        const int pieces =
            position.whiteMen + position.blackMen - position.whitePawnCount - position.blackPawnCount - 2;
        score += endgameTerms(context);
        score = applyEndgameRules(context, score, pieces);
    }

    return score + context.threatened[Black].unanswered() - context.threatened[White].unanswered();
}

}  // namespace valku
