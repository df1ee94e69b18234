#pragma once

#include "platform/integers.h"

// Squares, piece codes and the move word. The board is a 0x88 mailbox: square numbers leave a gap of eight
// files beside the board, so that one AND tells whether a square is on it, and the difference of two squares
// determines their distance in files and ranks (https://www.chessprogramming.org/0x88).

namespace valku {

// The value of Position::sideToMove, and the template parameter of every rule that both colors share.
enum Color : u8 { Black = 0, White = 1 };

constexpr Color operator~(Color color) {
    return color == White ? Black : White;
}

// A square is rank * 16 + file. It is on the board when (square & 0x88) == 0.
constexpr int noSquare = 127;  // ends a piece list; a lost castling right; a king that is not placed yet
constexpr int noEpField = 123;
constexpr int lastSquare = 119;

constexpr int makeSquare(int file, int rank) {
    return rank * 16 + file;
}
constexpr int fileOf(int square) {
    return square & 15;
}
constexpr int rankOf(int square) {
    return square >> 4;
}
constexpr bool onBoard(int square) {
    return (square & 0x88) == 0;
}
constexpr int mirrorRank(int square) {
    return square ^ 0x70;
}

// The parity of rank + file; a1 is dark.
constexpr bool isDarkSquare(int square) {
    return ((rankOf(square) + fileOf(square)) & 1) == 0;
}

// The larger of rank and file distance (Chebyshev distance): king moves from a to b.
constexpr int kingDistance(int a, int b) {
    const int files = fileOf(a) > fileOf(b) ? fileOf(a) - fileOf(b) : fileOf(b) - fileOf(a);
    const int ranks = rankOf(a) > rankOf(b) ? rankOf(a) - rankOf(b) : rankOf(b) - rankOf(a);
    return files > ranks ? files : ranks;
}

// clang-format off
enum Square : int {
    A1 = 0x00, B1, C1, D1, E1, F1, G1, H1,
    A2 = 0x10, B2, C2, D2, E2, F2, G2, H2,
    A3 = 0x20, B3, C3, D3, E3, F3, G3, H3,
    A4 = 0x30, B4, C4, D4, E4, F4, G4, H4,
    A5 = 0x40, B5, C5, D5, E5, F5, G5, H5,
    A6 = 0x50, B6, C6, D6, E6, F6, G6, H6,
    A7 = 0x60, B7, C7, D7, E7, F7, G7, H7,
    A8 = 0x70, B8, C8, D8, E8, F8, G8, H8,
};
// clang-format on

// Piece codes are sets of flags. The empty code carries both color flags, so that one test tells the move
// generators whether a man may go to a square; off the board every flag is clear. Man means any piece or
// pawn.
constexpr u8 whiteFlag = 0x01;
constexpr u8 blackFlag = 0x02;
constexpr u8 pawnFlag = 0x04;
constexpr u8 knightFlag = 0x08;
constexpr u8 kingFlag = 0x10;
constexpr u8 straightFlag = 0x20;  // moves along ranks and files
constexpr u8 diagonalFlag = 0x40;
constexpr u8 manFlag = 0x80;

constexpr u8 offBoard = 0;
constexpr u8 empty = whiteFlag | blackFlag;

enum PieceCode : u8 {
    WhitePawn = 133,
    BlackPawn = 134,
    WhiteKnight = 137,
    BlackKnight = 138,
    WhiteKing = 145,
    BlackKing = 146,
    WhiteRook = 161,
    BlackRook = 162,
    WhiteBishop = 193,
    BlackBishop = 194,
    WhiteQueen = 225,
    BlackQueen = 226,
};

constexpr u8 colorFlag(Color color) {
    return color == White ? whiteFlag : blackFlag;
}

// True for a man of that color; false for an empty square and off the board.
constexpr bool isManOf(Color color, u8 code) {
    const u8 mask = static_cast<u8>(manFlag | colorFlag(color));
    return (code & mask) == mask;
}

// The same man of the other color.
constexpr u8 otherColor(u8 code) {
    return static_cast<u8>(code ^ (whiteFlag | blackFlag));
}

// A move word: bits 0-7 destination, 8-15 origin, 16-23 code of the promoted piece, 24-31 castling mark. 0 is
// the null move. An en passant capture has no mark: it is a pawn move to the en passant square.
using Move = u32;

constexpr Move nullMove = 0;

enum CastlingMark : u32 { noCastling = 0, shortCastling = 1, longCastling = 2 };

constexpr int moveTo(Move move) {
    return static_cast<int>(move & 0xFF);
}
constexpr int moveFrom(Move move) {
    return static_cast<int>((move >> 8) & 0xFF);
}
constexpr u8 movePromotion(Move move) {
    return static_cast<u8>(move >> 16);
}
constexpr u32 moveCastling(Move move) {
    return move >> 24;
}

constexpr Move makeMoveWord(int from, int to, u8 promotion = 0, u32 castling = noCastling) {
    return static_cast<Move>(to) | static_cast<Move>(from) << 8 | static_cast<Move>(promotion) << 16 |
           castling << 24;
}

// More than any position with at most 16 men and 9 queens a side has pseudo-legal moves.
constexpr int maxMoves = 256;

// The moves of a node; the first `count` entries are valid. `mobility` is set by the generators, `scores` by
// the move ordering.
struct MoveList {
    i32 count;
    i32 mobility;
    Move moves[maxMoves];
    i32 scores[maxMoves];
};

}  // namespace valku
