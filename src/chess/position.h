#pragma once

#include "chess/types.h"

// A whole position with the history that leads to it, and the two instances that a process works on.

namespace valku {

// The part of a position that unmaking a move takes from the stack: one record for each position of the
// history. `captured` and `move` describe the move that was made in this position.
struct StateRecord {
    u32 hashLow;   // indexes the transposition table
    u32 hashHigh;  // the check word of the transposition table
    u64 pawnHash;
    u8 castlings[4];  // squares of the rooks that may still castle, by CastlingRight; noSquare if lost
    u8 epField;       // noEpField if there is none
    u8 fiftyMoves;    // plies since the last capture or pawn move
    u8 captured;      // board content of the destination; empty for en passant and a null move too
    Move move;        // 0 for a null move
};

enum CastlingRight { whiteLong = 0, whiteShort = 1, blackLong = 2, blackShort = 3 };

// One cell for each 0x88 square, with margins wide enough that `square + step` can be read for every square
// of the board and every step up to a knight's.
template <class T>
struct PaddedSquares {
    static constexpr int lowerMargin = 33;
    static constexpr int upperMargin = 25;

    T cells[lowerMargin + 128 + upperMargin];

    T& operator[](int square) { return cells[square + lowerMargin]; }
    const T& operator[](int square) const { return cells[square + lowerMargin]; }
};

constexpr int stateStackSize = 513;

// Mailbox, piece lists, counters and a few bitboards, all updated incrementally by every move. The bitboards
// are filters for the attack tests; bit rank * 8 + file. A piece list is unordered and ends with noSquare: a
// removal moves the last entry into the gap, so the order of a list depends on the moves that led here.
struct Position {
    PaddedSquares<u8> board;
    u64 whiteKnightsBB, blackKnightsBB;
    u64 whiteDiagonalBB, blackDiagonalBB;  // bishops and queens
    u64 whiteStraightBB, blackStraightBB;  // rooks and queens
    i32 whiteKing, blackKing;
    i32 whiteMaterial, blackMaterial;  // hundredths of a pawn, kings excluded
    u8 whiteMen, blackMen;             // kings and pawns included
    u8 whitePawnCount, whiteKnightCount, whiteBishopCount, whiteRookCount, whiteQueenCount;
    u8 blackPawnCount, blackKnightCount, blackBishopCount, blackRookCount, blackQueenCount;
    i8 whitePawnsOnFile[8], blackPawnsOnFile[8];
    u8 whiteRooks[11];
    u8 whitePawns[9];
    u8 whiteKnights[11], whiteBishops[11];
    u8 whiteQueens[10];
    u8 blackRooks[11];
    u8 blackPawns[9];
    u8 blackKnights[11], blackBishops[11];
    u8 blackQueens[10];
    PaddedSquares<i8> whitePawnAttacks, blackPawnAttacks;  // number of pawns that attack a square
    u8 sideToMove;                                         // a Color
    StateRecord states[stateStackSize];
    StateRecord* state = states;  // the record of the current position

    Position() = default;
    // Copies point into their own stack, at the same record index as the source.
    Position(const Position& source);
    Position& operator=(const Position& source);
};

// The game that is being played: front-ends, book and set-up commands work on it. Written by the thread that
// reads the commands and, for the moves of a search, by the thread that thinks; search control keeps the two
// apart.
extern Position gamePosition;

// The position of the running search. Only the thread that searches uses it; while no search runs, the thread
// that reads the commands. A global, so that the hot functions address its fields by constants.
extern Position searchPosition;

// An empty board: empty lists, counts 0, kings on noSquare, the first record current and without castling
// rights. Keys, attack counters and bitboards are left to computeDerived().
void clearPosition(Position& position);

// Puts a man on an empty square: mailbox, list, counts, material, king square and pawns per file; keys,
// attack counters and bitboards are left alone. False, with the position unchanged, if the list of that man
// is full, the side has 16 men, or a second king is placed.
bool placeMan(Position& position, u8 code, int square);

// Recomputes the attack counters and the bitboards from the piece lists.
void computePawnAttacks(Position& position);
void computeBitboards(Position& position);

// The same, and the keys of the placement into the current record, for a board that has been set up man by
// man. Keys that were updated through a promotion or castling differ from these: see makeMove().
void computeDerived(Position& position);

// Recomputes the material sums after a change of the piece values.
void computeMaterial(Position& position);

// A bytewise copy, with the state pointer set to the same record of the destination's own stack.
void copyPosition(Position& destination, const Position& source);

// Moves of the game that are no longer on the stack of gamePosition; see trimStateStack(). Written by the
// threads that write gamePosition.
extern int droppedGameMoves;

// Makes room on the stack for a whole search: when the game has grown so long that a search could overflow
// the stack, the oldest records are dropped, except those that a repetition can still reach. Returns how many
// were dropped.
int trimStateStack(Position& position);

// Plies between the first record of the stack and the current one.
inline int stackedMoves(const Position& position) {
    return static_cast<int>(position.state - position.states);
}

}  // namespace valku
