#include "protocol/game_commands.h"

#include "chess/fen.h"
#include "chess/game.h"
#include "eval/evaluate.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"
#include "protocol/board_output.h"
#include "protocol/game_snapshot.h"
#include "protocol/game_state.h"
#include "protocol/protocol_mode.h"
#include "protocol/search_output.h"
#include "protocol/uci.h"
#include "search/search_interrupt.h"
#include "search/search_job.h"
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

}  // namespace

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

bool setFen(std::string_view fen) {
    if (!readFen(fen)) return false;
    snapshotKings();
    printBoard();
    return true;
}

void mirror() {
    if (!isSettled()) return;
    mirrorPosition();
    snapshotKings();
    printBoard();
}

// Of the position that a running search began with, if there is one: it goes on meanwhile.
void showEvaluation() {
    i32 value = 0;
    const auto evaluateGame = [&value] {
        searchPosition = copyGame();
        computeRootMobility();
        value = evaluate();
    };
    bool done = false;
    while (!done && !isSettled()) done = doBetweenNodes(evaluateGame, isAnswerOpen);
    if (!done) evaluateGame();
    sendText(formatText("info string eval is: %i\n", value));
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
