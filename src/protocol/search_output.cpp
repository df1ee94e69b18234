#include "protocol/search_output.h"

#include <sstream>

#include "chess/move_text.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"
#include "protocol/board_output.h"
#include "protocol/game_result.h"
#include "protocol/game_snapshot.h"
#include "protocol/protocol_mode.h"
#include "search/hash_table.h"
#include "thinking/main_line.h"

namespace valku {

SharedFlag computerOpponent{false};

namespace {

std::string lineText(const Line& line) {
    std::string text;
    for (const Move* move = line.moves; *move; ++move) {
        if (move != line.moves) text += ' ';
        text += moveToText(*move);
    }
    return text;
}

// Milliseconds since the search began; the reports count no finer.
u64 elapsedMilliseconds() {
    return static_cast<u64>((steadySeconds() - startTime) * 1000.0);
}

u64 nodesPerSecond(u64 milliseconds) {
    return totalNodes * 1000 / (milliseconds > 0 ? milliseconds : 1);
}

std::string tablebaseRate() {
    return std::to_string(totalTbHits) + "/" + std::to_string(totalTbProbes);
}

}  // namespace

void SearchOutput::moveMade() {
    snapshotKings();
    announceMove();
    printBoard();
    checkGameEnd(true);
    if (resignValue != 0) checkResign(lastScore);
}

void SearchOutput::bookMoveMade(Move move, char value) {
    snapshotKings();
    announceBookValue(value);
    Line line{};
    line.moves[0] = move;
    sendMainLine(0, move, 0, line, false);
    sendMove();
    printBoard();
}

void UciOutput::clockRead(i32 moves, double remaining, double increment) {
    sendText(formatText("info string movesToGo = %u; remainingTime = %.2f; increment = %.2f\n",
                        static_cast<unsigned>(moves), remaining, increment));
}

void UciOutput::timeScheduled(double scheduledSeconds, double maxSeconds) {
    sendText(formatText("info string scheduled time=%.2fs, maxtime=%.2fs\n", scheduledSeconds, maxSeconds));
}

void UciOutput::rootMoveBegun(i32 depth, Move move, i32 number, const StateRecord& before) {
    sendText(formatText("info depth %i currmove %s currmovenumber %i hashfull %u\n", depth,
                        moveToUciText(move, before).c_str(), number, hashFull()));
}

void UciOutput::mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) {
    const u64 milliseconds = elapsedMilliseconds();
    std::ostringstream text;
    text << "info depth " << depth << " seldepth " << totalSelDepth << " time " << milliseconds << " nodes "
         << totalNodes << " nps " << nodesPerSecond(milliseconds) << " pv " << lineText(line) << " score cp "
         << score << (failHigh ? " lowerbound" : "") << " hashfull " << hashFull() << " tbhits "
         << totalTbHits << '\n';
    sendText(text.str());
}

void UciOutput::failedLow(i32 depth, i32 score, const Line& line) {
    std::ostringstream text;
    text << "info depth " << depth << " seldepth " << totalSelDepth << " score cp " << score
         << " upperbound pv " << lineText(line) << '\n';
    sendText(text.str());
}

void UciOutput::timeRanOut() {
    sendText("info string timeout!\n");
}

void UciOutput::moveChosen(Move move) {
    chosenMove = moveToUciText(move, *gamePosition.state);
}

void UciOutput::sendMove() {
    std::string text = "bestmove " + chosenMove;
    if (mainLine.moves[1]) text += " ponder " + moveToUciText(mainLine.moves[1], *gamePosition.state);
    sendText(text + "\n");
}

void XboardOutput::mainLineFound(i32 depth, i32 score, const Line& line, bool) {
    std::ostringstream text;
    text << depth << ' ' << score << ' ' << elapsedMilliseconds() / 10 << ' ' << totalNodes << ' '
         << lineText(line) << " tb=" << tablebaseRate() << '\n';
    sendText(text.str());
}

void XboardOutput::moveChosen(Move move) {
    chosenMove = move;
}

void XboardOutput::sendMove() {
    sendText("move " + moveToText(chosenMove) + "\n");
}

void XboardOutput::announceBookValue(char value) {
    sendText(formatText("%s kibitz bookMove (value %c)\n", computerOpponent ? "tellics" : "whisper", value));
}

void XboardOutput::announceMove() {
    const std::string comment = computerOpponent ? "tellics kibitz" : "tellics whisper";
    std::ostringstream text;
    text << comment << " T=" << lastDepth << " eval=" << lastScore << " time=" << elapsedMilliseconds() / 1000
         << "s nodes=" << totalNodes << " mainLine: " << lineText(mainLine) << " tb=" << tablebaseRate()
         << '\n';
    sendText(text.str());
    sendMove();
    if (const Line* line = findFinishedLine(chosenMove)) {
        sendText(comment + " ponderMove=" + moveToText(line->moves[1]) + "\n");
    }
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

SearchObserver* searchOutput() {
    static UciOutput uci;
    static XboardOutput xboard;
    static ConsoleOutput console;
    switch (protocolMode) {
        case protocolUci:
            return &uci;
        case protocolXboard:
            return &xboard;
        default:
            return &console;
    }
}

}  // namespace valku
