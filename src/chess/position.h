#pragma once

#include "chess/types.h"

// The record of a whole position with the history that leads to it, and the two instances of a process.

namespace valku {

// What is known of one position of the stack. `captured` and `move` are written when a move leaves the
// record.
struct StateRecord {
    u32 hashLow;   // indexes the transposition table
    u32 hashHigh;  // the check word of the transposition table
    u64 pawnHash;
    u8 castlings[4];  // squares of the rooks that may still castle; indexed by CastlingRight, 127 when gone
    u8 epField;       // 123 when there is none
    u8 fiftyMoves;    // plies since the last capture or pawn move
    u8 captured;      // board content of the destination; 3 also for en passant and a null move
    Move move;        // 0 for a null move
};

enum CastlingRight { whiteLong = 0, whiteShort = 1, blackLong = 2, blackShort = 3 };

// One cell per 0x88 square with margins wide enough that `square + step` can be read for every square of the
// board and every step up to a knight's.
template <class T>
struct PaddedSquares {
    static constexpr int lowerMargin = 33;
    static constexpr int upperMargin = 25;

    T cells[lowerMargin + 128 + upperMargin];

    T& operator[](int square) { return cells[square + lowerMargin]; }
    const T& operator[](int square) const { return cells[square + lowerMargin]; }
};

constexpr int stateStackSize = 513;

// Mailbox, piece lists, counters and a few bitboards, all kept in step by every move. The bitboards are
// filters for the attack tests; bit rank * 8 + file. A piece list is unordered and closed by 127: a removal
// moves the last entry into the hole, so the order of a list depends on the road to the position.
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

// The real game: front-ends, book and set-up commands work on it.
extern Position gamePosition;

// The position of the running search. A global, so that the hot routines address its fields as constants.
extern Position searchPosition;

// An empty board: lists closed, counts 0, kings on 127, the first record current and without rights. Keys and
// attack counters are left to the compute routines below.
void clearPosition(Position& position);

// Puts a man on an empty square: mailbox, list, counts, material, king square and pawns per file; nothing
// else. False, with the position unchanged, if the list of that man is full, the side has 16 men, or a second
// king is placed.
bool placeMan(Position& position, u8 code, int square);

// The keys of the placement as it stands, into the current record. A key that was carried through promotions
// or castling differs from the one computed here.
void computeHash(Position& position);
void computePawnHash(Position& position);

void computePawnAttacks(Position& position);
void computeBitboards(Position& position);

// All four of them, for a board that has been set up man by man.
void computeDerived(Position& position);

// The material sums under the current piece values; needed when a value setting has changed.
void computeMaterial(Position& position);

// A bytewise copy with the state pointer moved to the destination's own stack.
void copyPosition(Position& destination, const Position& source);

// Game moves of gamePosition that no longer stand on its stack.
extern int droppedGameMoves;

// Makes room on the stack for a whole search below the current record: when the game has grown so long that a
// search could run off the stack, the oldest records are dropped. The records that a repetition can still
// reach are kept. Returns how many were dropped.
int trimStateStack(Position& position);

// Plies between the first record of the stack and the current one.
inline int stackedMoves(const Position& position) {
    return static_cast<int>(position.state - position.states);
}

}  // namespace valku
