#pragma once

#include <algorithm>
#include <cstdlib>

#include "chess/piece_values.h"
#include "chess/side.h"
#include "eval/eval_context.h"
#include "eval/passed_pawns.h"
#include "eval/weights.h"

// Corrections of endgame scores: pawn races, material that cannot be won, scaling by the kind of material.
// Scores are hundredths of a pawn from White's view unless a function says otherwise.

namespace valku {

constexpr i32 wonRace = 500;
constexpr i32 narrowRace = 100;
constexpr i32 rookPawnDraw = 10;  // a draw, but better to have the pawn

// Moves `score` towards 0 by `amount`, but not past it.
inline i32 shrink(i32 score, i32 amount) {
    return score > 0 ? std::max(score - amount, 0) : std::min(score + amount, 0);
}

// The side whose pawn queens first wins, unless by one move only. From the view of Us, the side to move.
template <Color Us>
[[gnu::always_inline]] inline i32 raceTerm(const EvalContext& context) {
    const int ours = context.race[Us];
    const int theirs = context.race[~Us];
    if (ours == noRace && theirs == noRace) return 0;
    if (theirs - ours > 1) return wonRace;
    if (theirs - ours == 1) return narrowRace;
    return ours == theirs ? -narrowRace : -wonRace;
}

// Raises pawn endings; lowers rook endings, queen endings, opposite-colored bishops, and pawns on few files.
inline i32 scaleByMaterial(const EvalContext& context, i32 score, int pieces) {
    const Position& position = searchPosition;
    if (pieces == 0) {
        // Plus 30 per cent.
        const i64 raise = static_cast<i64>(score) * 314573 / (1 << 20);
        score += static_cast<i32>(std::clamp<i64>(raise, -50, 50));
    } else {
        if (pieces == position.whiteRookCount + position.blackRookCount) score = shrink(score, 4 * pieces);
        if (pieces == position.whiteQueenCount + position.blackQueenCount) score = shrink(score, 16);
        const bool oppositeBishops =
            pieces == 2 && position.whiteBishopCount == 1 && position.blackBishopCount == 1 &&
            isDarkSquare(position.whiteBishops[0]) != isDarkSquare(position.blackBishops[0]);
        if (oppositeBishops) score -= std::clamp(score / 2, -150, 150);
    }
    if (context.pawns.pawnSpread < 4) score -= std::clamp(score / 4, -40, 40);
    return score;
}

// The wrong rook pawn (https://www.chessprogramming.org/Wrong_Color_Bishop): all pawns of Us are on the rook
// file that ends in `corner`, and the enemy king is nearer to it than our king and than the pawns. A draw
// with pawns alone or with a bishop that does not cover the corner; then `score`, from the view of Us, is
// set. True if pawns and kings are placed like that, whatever pieces Us has.
template <Color Us>
[[gnu::always_inline]] inline bool isRookPawnEnding(const EvalContext& context, int corner, i32& score) {
    constexpr Color Them = ~Us;
    const Position& position = searchPosition;
    const int pawnCount = pawnCountOf<Us>(position);
    if (pawnsOnFileOf<Us>(position)[fileOf(corner)] != pawnCount) return false;

    const int enemyDistance = kingDistance(kingOf<Them>(position), corner);
    const int ownDistance = kingDistance(kingOf<Us>(position), corner);
    if (enemyDistance > std::min(ownDistance - 1, context.race[Us])) return false;

    const bool onlyPawns = hasOnlyPawns<Us>();
    const bool wrongBishop = menOf<Us>(position) == pawnCount + 2 && bishopCountOf<Us>(position) == 1 &&
                             isDarkSquare(bishopsOf<Us>(position)[0]) != isDarkSquare(corner);
    if (onlyPawns || wrongBishop) score = rookPawnDraw;
    return true;
}

// Material with which Us, whose score is positive, cannot win or hardly so. Scores are from the view of Us.
template <Color Us>
[[gnu::always_inline]] inline i32 capByMaterial(const EvalContext& context, i32 score) {
    constexpr Color Them = ~Us;
    const Position& position = searchPosition;
    const int men = menOf<Us>(position);
    const int minors = knightCountOf<Us>(position) + bishopCountOf<Us>(position);

    if (men == 2) {
        if (minors == 1) return 0;
        if (rookCountOf<Us>(position) == 1 && bishopCountOf<Them>(position) == 1) return 0;
    }
    if (men == 3 && rookCountOf<Us>(position) == 1 && rookCountOf<Them>(position) == 1 && minors == 1)
        return 0;

    const bool smallLead =
        pawnCountOf<Them>(position) * pawnValue + materialOf<Us>(position) - materialOf<Them>(position) <=
        minorValue;
    if (pawnCountOf<Us>(position) == 0 && smallLead) {
        score /= 8;
        // The rules below follow for Black only.
        if constexpr (Us == White) return score;
    }
    if (men == 3 && knightCountOf<Us>(position) == 2) return 0;
    if (!isRookPawnEnding<Us>(context, Side<Us>::square(A8), score)) {
        isRookPawnEnding<Us>(context, Side<Us>::square(H8), score);
    }
    return score;
}

// The last step of an endgame evaluation. `pieces` is the number of knights, bishops, rooks and queens on the
// board.
inline i32 applyEndgameRules(const EvalContext& context, i32 score, int pieces) {
    const Position& position = searchPosition;
    score += position.sideToMove == White ? raceTerm<White>(context) : -raceTerm<Black>(context);
    score = scaleByMaterial(context, score, pieces);
    if (position.whiteMaterial + position.blackMaterial > drawishMaterial) return score;
    if (score > 0) return capByMaterial<White>(context, score);
    if (score < 0) return -capByMaterial<Black>(context, -score);
    return score;
}

}  // namespace valku
