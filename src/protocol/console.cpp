#include "protocol/console.h"

#include <sstream>

#include "chess/board_text.h"
#include "chess/fen.h"
#include "chess/move_text.h"
#include "eval/evaluate.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"
#include "protocol/game.h"
#include "protocol/protocol_mode.h"
#include "search/search_interrupt.h"
#include "search/search_job.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"

namespace valku {

void printBoard() {
    if (protocolMode == protocolConsole) sendText(boardText(gamePosition));
}

// Only a person gets an error message.
void fenCommand(std::string_view fen) {
    if (!isSettled() || setFen(fen) || protocolMode != protocolConsole) return;
    sendText("Error: this is no legal position; the old one stays\n");
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

void ConsoleOutput::mainLineFound(i32 depth, i32 score, const Line& line, bool) {
    std::ostringstream seconds;
    seconds << steadySeconds() - startTime;
    sendText(formatText("\nHauptvariante (T=%i/%i): ", depth, totalSelDepth) + lineText(line) + "\n");
    sendText("Wert: " + std::to_string(score) + "\n");
    sendText("Knoten: " + std::to_string(totalNodes) + "\n");
    sendText("Verstrichene Zeit: " + seconds.str() + "\n");
    sendText("Tablebaserate: " + tablebaseRate() + "\n");
}

void ConsoleOutput::failedHigh(i32 depth, i32 score) {
    sendText(formatText("Fail high bei T=%i, value = %i!\n", depth, score));
}

void ConsoleOutput::failedLow(i32 depth, i32 score, const Line&) {
    sendText(formatText("Fail low bei T=%i, value = %i!\n", depth, score));
}

void ConsoleOutput::moveChosen(Move move) {
    chosenMove = move;
}

void ConsoleOutput::sendMove() {
    sendText("move " + moveToText(chosenMove) + "\n");
}

void ConsoleOutput::announceBookValue(char value) {
    sendText(formatText("bookMove (value %c)\n", value));
}

}  // namespace valku
