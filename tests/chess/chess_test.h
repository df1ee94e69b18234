#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/piece_values.h"
#include "chess/position.h"
#include "chess/tables.h"
#include "shared/start_up.h"
#include "shared/value_scope.h"

// What the tests of the chess core and of the search share. Positions are set up as the engine does it: from
// a FEN into gamePosition, and from there into searchPosition.

namespace valku {

[[maybe_unused]] inline const auto* const chessTables = startUpWith({initChessTables});

constexpr const char* richPosition = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";

inline void setPosition(std::string_view fen) {
    if (!readFen(fen)) ADD_FAILURE() << "refused: " << fen;
    searchPosition = gamePosition;
}

// Chess960 as a UCI interface switches it on, for the length of a scope.
class Chess960Scope {
  public:
    explicit Chess960Scope(bool on = true, bool shredder = true, bool arena = false) {
        chess960 = on;
        shredderFen = shredder;
        arenaCastlingNotation = arena;
    }
    ~Chess960Scope() { chess960 = shredderFen = arenaCastlingNotation = false; }
    Chess960Scope(const Chess960Scope&) = delete;
    Chess960Scope& operator=(const Chess960Scope&) = delete;
};

inline std::string squareText(int square) {
    return {static_cast<char>('a' + fileOf(square)), static_cast<char>('1' + rankOf(square))};
}

// A text for every move word: coordinates, the promotion piece, and s or l for castling.
inline std::string notation(Move move) {
    std::string text = squareText(moveFrom(move)) + squareText(moveTo(move));
    if (const u8 man = movePromotion(move)) {
        text += man & knightFlag ? 'N' : !(man & straightFlag) ? 'B' : man & diagonalFlag ? 'Q' : 'R';
    }
    if (moveCastling(move)) text += moveCastling(move) == shortCastling ? 's' : 'l';
    return text;
}

inline std::string notation(const MoveList& list) {
    std::string text;
    for (i32 i = 0; i < list.count; ++i) {
        if (i) text += ' ';
        text += notation(list.moves[i]);
    }
    return text;
}

// The generated move of searchPosition with that notation.
inline Move moveOf(std::string_view text) {
    MoveList list;
    generateAllMoves(list);
    for (i32 i = 0; i < list.count; ++i) {
        if (notation(list.moves[i]) == text) return list.moves[i];
    }
    ADD_FAILURE() << text << " is no move of " << writeFen(searchPosition);
    return nullMove;
}

inline void play(const std::string& moves) {
    std::istringstream words(moves);
    for (std::string word; words >> word;) {
        if (const Move move = moveOf(word)) makeMove(move);
    }
}

// The legal moves, tried on the position itself as the search does.
inline std::vector<Move> legalMoves() {
    MoveList list;
    generateAllMoves(list);
    std::vector<Move> legal;
    for (i32 i = 0; i < list.count; ++i) {
        makeMove(list.moves[i]);
        if (!leftKingInCheck()) legal.push_back(list.moves[i]);
        unmakeMove();
    }
    return legal;
}

// A random game on searchPosition, the same on every machine. Half of the time castling, en passant and
// promotion are preferred, because they would be too rare otherwise.
class RandomGame {
  public:
    RandomGame(std::string_view fen, u64 seed) : random_(seed) { setPosition(fen); }

    // False if the game is over.
    bool playMove() {
        const std::vector<Move> legal = legalMoves();
        if (legal.empty()) return false;
        std::vector<Move> special;
        std::copy_if(legal.begin(), legal.end(), std::back_inserter(special), isSpecial);
        random_ = random_ * 6364136223846793005u + 1442695040888963407u;
        const std::vector<Move>& moves = !special.empty() && (random_ >> 32 & 1) ? special : legal;
        makeMove(moves[(random_ >> 33) % moves.size()]);
        return true;
    }

    static bool isSpecial(Move move) {
        return move >> 16 || ((searchPosition.board[moveFrom(move)] & pawnFlag) &&
                              moveTo(move) == searchPosition.state->epField);
    }

  private:
    u64 random_;
};

// Everything that a position updates together with its board, and its record without the keys of the
// placement, which depend on the promotions and castlings so far. Lists are compared without their order.
inline std::string factsOf(const Position& position) {
    Position p(position);
    const auto sort = [](auto&... lists) { (std::sort(std::begin(lists), std::end(lists)), ...); };
    sort(p.whitePawns, p.whiteKnights, p.whiteBishops, p.whiteRooks, p.whiteQueens);
    sort(p.blackPawns, p.blackKnights, p.blackBishops, p.blackRooks, p.blackQueens);
    std::ostringstream facts;
    facts.write(reinterpret_cast<const char*>(&p), offsetof(Position, states));
    facts << p.state->pawnHash << ' ' << +p.state->epField << ' ' << +p.state->fiftyMoves;
    for (const u8 rook : p.state->castlings) facts << ' ' << +rook;
    return facts.str();
}

}  // namespace valku
