#pragma once

#include <algorithm>
#include <cstdlib>

#include "chess/side.h"
#include "eval/eval_context.h"
#include "eval/eval_tables.h"
#include "eval/weights.h"

// King safety, in the middlegame only: attack units for the pieces near a king or aimed at it, converted to a
// score by kingAttackTable (https://www.chessprogramming.org/King_Safety), pawn shelter and pawn storm.
// Points are attack units, not hundredths of a pawn.

namespace valku {

constexpr i32 noQueenRelief = 3;  // points off an attack without a queen
constexpr i32 queenPawnHook = 3;  // the queen's side has a pawn on f6 or c6 before the king, or f3 or c3
constexpr i32 diagonalWeight = 3;
constexpr i32 shelterUnit = 4;  // hundredths of a pawn for each point of the pawn entry's shelter

inline int fileDistance(int a, int b) {
    return std::abs(fileOf(a) - fileOf(b));
}

// Follows a bishop's diagonal towards the enemy king and adds the weight for each square near the king that
// no pawn guards. Men on the diagonal reduce the weight; a queen of the same side increases it.
template <Color Attacker>
[[gnu::noinline]] inline i32 diagonalAttack(int bishop, int king, int step, int length) {
    constexpr Color Defender = ~Attacker;
    const Position& position = searchPosition;
    i32 points = 0;
    i32 weight = diagonalWeight;
    bool queenBehind = false;

    for (int square = bishop + step; length > 0; --length, square += step) {
        const u8 man = position.board[square];
        const int guards = pawnAttacksOf<Defender>(position)[square];
        const int height = Side<Defender>::relativeRank(square) - Side<Defender>::relativeRank(king);
        const bool nearFile = fileDistance(square, king) <= 1;

        if (height == 0 || (height == 1 && nearFile)) {
            if (guards == 0) points += weight;
        } else if (height == 2 && nearFile && weight > 1) {
            const bool open = man == Side<Defender>::pawn ? guards < 2 && !queenBehind : guards == 0;
            if (open) points += weight - 1;
        }

        if (man == empty) continue;
        if ((man & pawnFlag) != 0) break;
        if (man == Side<Attacker>::queen) {
            weight += 2;
            queenBehind = true;
        } else if (isManOf(Attacker, man)) {
            if (--weight < 1) break;
        } else {
            if (queenBehind) break;
            if (man == Side<Defender>::knight && (guards != 0 || --weight < 1)) break;
        }
    }
    return points;
}

template <Color Attacker>
[[gnu::always_inline]] inline i32 bishopAttack(int bishop, int king) {
    constexpr int forward = Side<Attacker>::up;
    const int difference = Attacker == Black ? bishop - king : king - bishop;
    // The tables are for rays down the board: the ray of a white bishop to the east, reversed, leads west.
    const int eastLength = Attacker == Black ? rayLengthEast[difference] : rayLengthWest[difference];
    const int westLength = Attacker == Black ? rayLengthWest[difference] : rayLengthEast[difference];
    const int file = fileOf(bishop);
    return diagonalAttack<Attacker>(bishop, king, forward + 1, std::min(7 - file, eastLength)) +
           diagonalAttack<Attacker>(bishop, king, forward - 1, std::min(file, westLength));
}

// A rook or queen on a file near the enemy king. Without an own pawn ahead: points for the file, fewer for
// minor pieces on it and for a pawn of the defender that is guarded or advanced. Behind an own pawn: points
// if that pawn is a lever, which can open the file by an exchange.
template <Color Attacker>
[[gnu::noinline]] inline i32 fileAttack(const EvalContext& context, int square) {
    constexpr Color Defender = ~Attacker;
    const Position& position = searchPosition;
    const int file = fileOf(square);
    const int ownRear = rearOf<Attacker>(context.pawns)[file];
    const int enemyRear = rearOf<Defender>(context.pawns)[file];

    if (pawnsOnFileOf<Attacker>(position)[file] == 0 || isAhead<Attacker>(square, ownRear)) {
        const int open = 6 - context.minorsOnFile[file];
        if (!isAhead<Attacker>(enemyRear, square)) return open;
        const int guards = pawnAttacksOf<Defender>(position)[enemyRear];
        return std::max(0, open - guards - Side<Defender>::relativeRank(enemyRear));
    }
    const int front = ownRear + Side<Attacker>::up;
    const bool lever =
        Side<Attacker>::relativeRank(ownRear) >= 3 && position.board[front] == empty &&
        pawnAttacksOf<Defender>(position)[front] - pawnAttacksOf<Attacker>(position)[front] == 1;
    return lever ? 2 : 0;
}

template <Color Attacker>
[[gnu::always_inline]] inline i32 queenAttack(const EvalContext& context, int king) {
    constexpr Color Defender = ~Attacker;
    const int queen = queensOf<Attacker>(searchPosition)[0];
    if (queen == noSquare) return -noQueenRelief;

    const int distance = kingDistance(queen, king);
    i32 points;
    if (distance < 4) {
        points = 8 - distance;
    } else if (fileDistance(queen, king) < 2) {
        points = fileAttack<Attacker>(context, queen);
    } else {
        return 0;
    }
    const int hook = Side<Defender>::square(fileOf(king) <= 3 ? C3 : F3);
    if (searchPosition.board[hook] == Side<Attacker>::pawn) points += queenPawnHook;
    return points;
}

// Adds the attack units of Attacker's pieces against the enemy king, and as defenders of their own.
template <Color Attacker>
[[gnu::always_inline]] inline void countKingAttack(EvalContext& context) {
    constexpr Color Defender = ~Attacker;
    const Position& position = searchPosition;
    const int king = kingOf<Defender>(position);
    const int ownKing = kingOf<Attacker>(position);
    i32 attack = 0;
    i32 defence = 0;

    const auto& knights = knightsOf<Attacker>(position);
    for (int i = 0; i < 2 && knights[i] != noSquare; ++i) {
        attack += knightAttackWeight[king - knights[i]];
        defence += knightDefenceWeight[ownKing - knights[i]];
    }
    const auto& bishops = bishopsOf<Attacker>(position);
    for (int i = 0; i < 2 && bishops[i] != noSquare; ++i) {
        attack += bishopAttack<Attacker>(bishops[i], king);
        defence += bishopDefenceWeight[ownKing - bishops[i]];
    }
    const auto& rooks = rooksOf<Attacker>(position);
    for (int i = 0; i < 2 && rooks[i] != noSquare; ++i) {
        if (fileDistance(rooks[i], king) < 2) attack += fileAttack<Attacker>(context, rooks[i]);
    }
    attack += queenAttack<Attacker>(context, king);

    context.attackOnKing[Defender] += attack;
    context.attackOnKing[Attacker] += defence;
}

// The cost of the attack on the king of Us, negative. To be called after countKingAttack() of both sides.
template <Color Us>
[[gnu::always_inline]] inline i32 kingAttackTerm(const EvalContext& context) {
    const i32 attack = context.attackOnKing[Us];
    return attack > 0 ? -kingAttackTable[std::min(attack, kingAttackTableSize - 1)] : 0;
}

// Pawn shelter of the king of Us, and the enemy's pawn storm. The storm weighs more if the enemy king is on
// the other wing or if the enemy's pawn chain points at our king.
template <Color Us>
[[gnu::always_inline]] inline i32 kingPawnTerm(const EvalContext& context) {
    constexpr Color Them = ~Us;
    const PawnEntry& pawns = context.pawns;
    const int file = fileOf(kingOf<Us>(searchPosition));
    const int enemyFile = fileOf(kingOf<Them>(searchPosition));

    const i32 shelter = file <= 2   ? shelterQueensideOf<Us>(pawns)
                        : file <= 4 ? shelterCentreOf<Us>(pawns)
                                    : shelterKingsideOf<Us>(pawns);
    const bool queenside = file <= 3;
    const i32 storm = queenside ? stormQueensideOf<Them>(pawns) : stormKingsideOf<Them>(pawns);
    const bool oppositeWings = queenside ? enemyFile >= 5 : enemyFile <= 2;
    const bool chainAtKing = chainWingOf<Them>(pawns) == (queenside ? chainToQueenside : chainToKingside);
    const i32 stormValue = oppositeWings || chainAtKing ? pawnStormValue2 : pawnStormValue1;
    return shelterUnit * shelter - storm * stormValue;
}

}  // namespace valku
