#pragma once

#include "chess/types.h"

// The weights of the evaluation, in hundredths of a pawn; the values of the men are in chess/piece_values.h.
// Most of them are settings. Written by the thread that reads the commands, only between searches.

namespace valku {

// The whole board
inline i32 endgameMaterial = 5200;  // more than that is a middlegame; see isMiddlegame()
inline i32 rightToMove = 8;
inline i32 rookAgainstNoRook = 20;   // endgames without queens
inline i32 twoKnightsMalus = 6;      // endgames
inline i32 blockedCentralPawn = 20;  // a d- or e-pawn that cannot leave its home square

// Rooks
inline i32 rookOn7th = 24;
inline i32 rookOnOpenLine = 16;
inline i32 doubledRooks = 10;
inline i32 narrowedRook = 10;  // a man behind a rook that faces an enemy pawn
inline i32 trappedRook = 45;   // in the corner, by its own king

// Bishops
inline i32 pairOfBishops = 35;
inline i32 trappedBishop = 120;  // on a7 or h7, by an enemy pawn on b6 or g6
inline i32 badBishop = 20;       // own pawns or the edge on both forward diagonals

// Pawns. These four go into the pawn hash table: a change counts for entries that are computed after it.
inline i32 doublePawn = 12;
inline i32 isolatedPawn = 18;
inline i32 backstandingPawn = 18;
inline i32 spaceAdvantage = 5;  // for each rank that a rear pawn of the four centre files has advanced

// King safety
inline i32 pawnStormValue1 = 7;   // kings on the same wing
inline i32 pawnStormValue2 = 12;  // kings on opposite wings, or the pawn chain points at the king
inline i32 kingSafety = 100;      // percentage of the attack table; see updateKingAttackTable()

// Derived from the values of the men.
extern i32 minorValue;       // the more valuable minor piece
extern i32 drawishMaterial;  // with more than this on the board no material draw is possible

// Recomputes the two values above and pieceValueByCode; to be called after every change of a piece value.
// Only between searches.
void updateDerivedMaterial();

}  // namespace valku
