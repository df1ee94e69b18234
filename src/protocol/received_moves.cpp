#include "protocol/received_moves.h"

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "protocol/board_output.h"
#include "protocol/game_commands.h"
#include "protocol/game_result.h"
#include "protocol/game_snapshot.h"
#include "search/search_control.h"
#include "search/thinking_state.h"

namespace valku {

namespace {

struct ReceivedMove {
    int from;
    int to;
    u32 castling;  // only of the castling words; a king move of two files is told apart on the board
    u8 promotion;
};

u8 promotionPiece(char letter, int to) {
    const bool white = rankOf(to) == 7;
    switch (letter | 0x20) {
        case 'n':
            return white ? WhiteKnight : BlackKnight;
        case 'b':
            return white ? WhiteBishop : BlackBishop;
        case 'r':
            return white ? WhiteRook : BlackRook;
        case 'q':
            return white ? WhiteQueen : BlackQueen;
        default:
            return 0;
    }
}

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
    const int from = makeSquare(text[0] - 'a', text[1] - '1');
    const int to = makeSquare(text[2] - 'a', text[3] - '1');
    return {from, to, noCastling, promotionPiece(text.size() > 4 ? text[4] : ' ', to)};
}

// The legal move that is meant: plain, else short, else long castling; 0 if there is none.
Move lookUp(const ReceivedMove& received) {
    for (const u32 castling : {noCastling, shortCastling, longCastling}) {
        Move move = textToMove(received.from, received.to, castling, gamePosition);
        if (move == nullMove || !isLegal(gamePosition, move)) continue;
        if (movePromotion(move) && received.promotion) {
            move = makeMoveWord(received.from, received.to, received.promotion);
        }
        return move;
    }
    return nullMove;
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

void playReceivedMove(Move move) {
    playGameMove(move);
    snapshotKings();
    checkGameEnd(false);
    printBoard();
}

// As long as `pondering` is set the search answers nothing, so the board with the expected move stands still.
void receiveExpectedMove() {
    checkGameEnd(false);
    printBoard();
    pondering = false;
    if (timeUsedUp) moveNow();
}

void receiveWhilePondering(const ReceivedMove& received) {
    if (isExpectedMove(received)) {
        receiveExpectedMove();
        return;
    }
    stopPondering();
    const Move move = lookUp(received);
    if (move == nullMove) return;
    playReceivedMove(move);
    goCommand("");
}

void ponderOn(const ReceivedMove& received) {
    if (!easyMode) return;  // an engine that ponders by itself takes no such orders
    const Move move = lookUp(received);
    if (move == nullMove) return;
    pondering = true;
    playGameMove(move);
    requestSearch();
}

bool isFile(char c) {
    return c >= 'a' && c <= 'h';
}
bool isRank(char c) {
    return c >= '1' && c <= '8';
}

}  // namespace

bool isMoveText(std::string_view line) {
    if (line == "O-O" || line == "O-O-O") return true;
    return line.size() >= 4 && isFile(line[0]) && isRank(line[1]) && isFile(line[2]) && isRank(line[3]);
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
    if (analyzing) stopThinking();
    if (thinkingActive) return;
    const Move move = lookUp(received);
    if (move == nullMove) return;
    playReceivedMove(move);
    if (analyzing || engineIsToMove()) requestSearch();
}

}  // namespace valku
