#include "protocol/game.h"

#include "chess/fen.h"
#include "chess/game.h"
#include "protocol/console.h"
#include "protocol/protocol_mode.h"
#include "protocol/uci.h"
#include "protocol/xboard.h"
#include "thinking/search_control.h"

namespace valku {

namespace {

constexpr i32 newGameDepth = 10;

void takeBack(int moves) {
    stopThinking();
    while (moves-- > 0) takeBackGameMove();
    snapshotKings();
    printBoard();
}

SearchRequest requestFor(bool ponderSearch) {
    SearchRequest request = nextSearch;
    request.gameKeeper = protocolMode == protocolUci ? GameKeeper::interface : GameKeeper::engine;
    request.pondering = ponderSearch;
    return request;
}

}  // namespace

void startSearch(bool asPonderSearch) {
    requestSearch(requestFor(asPonderSearch));
}

void limitsChanged() {
    renewLimits(requestFor(false));
}

void takeSideToMove() {
    engineSide = gamePosition.sideToMove == White ? engineWhite : engineBlack;
}

void resetGame() {
    chess960 = false;
    readFen(startPositionFen);
    snapshotKings();
    computerOpponent = false;
    nextSearch.timeControlled = false;
    nextSearch.maxDepth = newGameDepth;
    forgetPondering();
    engineSide = engineBlack;
}

void newGame() {
    stopThinking();
    resetGame();
    printBoard();
}

void force() {
    stopThinking();
    engineSide = engineNone;
    nextSearch.analyzing = false;
    forgetPondering();
}

void undo() {
    takeBack(1);
}
void undoTwice() {
    takeBack(2);
}

void snapshotKings() {
    gameSnapshot.whiteKing = gamePosition.whiteKing;
    gameSnapshot.blackKing = gamePosition.blackKing;
    gameSnapshot.sideToMove = gamePosition.sideToMove;
}

bool setFen(std::string_view fen) {
    if (!readFen(fen)) return false;
    snapshotKings();
    printBoard();
    return true;
}

void analyze() {
    stopThinking();
    nextSearch.timeControlled = false;
    nextSearch.maxDepth = analysisDepth;
    nextSearch.analyzing = true;
    goCommand("");
}

void exitAnalysis() {
    stopThinking();
    nextSearch.analyzing = false;
}

void goCommand(std::string_view arguments) {
    if (protocolMode == protocolUci) {
        finishThinking();
        goUci(arguments);
        return;
    }
    stopPondering();
    finishThinking();
    takeSideToMove();
    startSearch();
}

}  // namespace valku
