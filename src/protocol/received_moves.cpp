#include "protocol/received_moves.h"

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/game.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "chess/move_text.h"
#include "protocol/console.h"
#include "protocol/game.h"
#include "protocol/game_result.h"
#include "protocol/protocol_mode.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

struct ReceivedMove {
    int from;
    int to;
    u32 castling;  // set by castling words only; a king move of two files is recognised on the board
    u8 promotion;
};

// While the engine ponders, the board already holds the expected reply; castling is meant for the game as the
// interface sees it.
ReceivedMove readCastlingWord(bool isShort) {
    const bool white = gameSnapshot.sideToMove == White;
    const int from = white ? gameSnapshot.whiteKing : gameSnapshot.blackKing;
    const int to = isShort ? G1 : C1;
    return {from, white ? to : mirrorRank(to), isShort ? shortCastling : longCastling, 0};
}

ReceivedMove readMoveText(std::string_view text) {
    if (text == "O-O" || text == "O-O-O") return readCastlingWord(text == "O-O");
    int from = noSquare, to = noSquare;
    textToSquares(text, from, to);
    const char letter = text.size() > 4 ? static_cast<char>(text[4] & ~0x20) : ' ';
    return {from, to, noCastling, promotionPiece(letter, rankOf(to) == 7 ? White : Black)};
}

// The legal move that is meant, 0 if there is none. A castling word never means a plain king move.
Move lookUp(const ReceivedMove& received, const Position& position) {
    if (received.castling) {
        const Move move = textToMove(received.from, received.to, received.castling, position);
        return move != nullMove && isLegal(position, move) ? move : nullMove;
    }
    return withPromotion(findLegalMove(received.from, received.to, position), received.promotion);
}

bool isExpectedMove(const ReceivedMove& received) {
    if (stackedMoves(gamePosition) == 0) return false;
    const Move expected = gamePosition.state[-1].move;
    const bool samePromotion =
        movePromotion(expected) == received.promotion ||
        (received.promotion == 0 && (movePromotion(expected) & ~0x03) == (WhiteQueen & ~0x03));
    if (chess960 && moveCastling(expected) != received.castling) return false;
    return moveFrom(expected) == received.from && moveTo(expected) == received.to && samePromotion;
}

bool engineIsToMove() {
    return engineSide == (gamePosition.sideToMove == White ? engineWhite : engineBlack);
}

// Both may be called while a ponder search runs: as long as `pondering` is set the search answers nothing, so
// the board with the expected move stands still.

bool canMove() {
    Position position(gamePosition);
    MoveList list;
    generateAllMoves(position, list);
    return countLegalMoves(position, list) > 0;
}

void showReceivedMove() {
    checkGameEnd(false);
    printBoard();
}

void playReceivedMove(Move move) {
    playGameMove(move);
    snapshotKings();
    showReceivedMove();
}

void receiveExpectedMove() {
    showReceivedMove();
    if (canMove()) {
        ponderHit();
    } else {
        forgetPondering();
        stopThinking();
    }
}

Move lookUpBeforeExpectedMove(const ReceivedMove& received) {
    Position position(gamePosition);
    if (stackedMoves(position) > 0 && protocolMode != protocolUci) unmakeMove(position);
    return lookUp(received, position);
}

void receiveWhilePondering(const ReceivedMove& received) {
    if (isExpectedMove(received)) {
        receiveExpectedMove();
        return;
    }
    const Move move = lookUpBeforeExpectedMove(received);
    if (move == nullMove) return;
    stopPondering();
    playReceivedMove(move);
    if (canMove()) goCommand("");
}

void ponderOn(const ReceivedMove& received) {
    if (!easyMode) return;  // an engine that ponders by itself takes no such orders
    const Move move = lookUp(received, gamePosition);
    if (move == nullMove) return;
    playGameMove(move);
    startSearch(true);
}

}  // namespace

bool isMoveText(std::string_view line) {
    if (line == "O-O" || line == "O-O-O") return true;
    int from = noSquare, to = noSquare;
    return textToSquares(line, from, to);
}

void receiveMove(std::string_view text, bool ponderFlag) {
    if (isSettled()) snapshotKings();
    const ReceivedMove received = readMoveText(text);
    if (ponderFlag) {
        ponderOn(received);
        return;
    }
    if (pondering) {
        receiveWhilePondering(received);
        return;
    }
    if (thinkingActive && !nextSearch.analyzing) return;
    if (lookUp(received, copyGame()) == nullMove) return;  // and an analysis goes on
    stopThinking();
    const Move move = lookUp(received, gamePosition);  // the search may have ended in a move of its own
    if (move == nullMove) return;
    playReceivedMove(move);
    if ((nextSearch.analyzing || engineIsToMove()) && canMove()) startSearch();
}

}  // namespace valku
