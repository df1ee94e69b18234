#include "protocol/xboard.h"

#include <algorithm>
#include <sstream>

#include "chess/move_text.h"
#include "chess/position.h"
#include "platform/format_text.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/engine_name.h"
#include "protocol/game.h"
#include "protocol/protocol_mode.h"
#include "protocol/received_moves.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

bool fritzMode = false;  // "hard" has no effect

// The number at the start of `text`, which then goes on after its next blank.
i32 takeArgument(std::string_view& text) {
    const i32 number = readNumber(text);
    takeField(text);
    return number;
}

}  // namespace

void sendXboardFeatures() {
    settleProtocol(protocolXboard);
    sendText("feature myname=\"" + std::string(engineName) +
             "\" sigint=0\nfeature variants=\"normal,fischerandom\"\n");
}

void setClock(std::string_view argument) {
    nextSearch.levelClock.remainingCentiseconds = readNumber(argument);
    nextSearch.timeControlled = true;
    limitsChanged();
}

void setDepth(std::string_view argument) {
    nextSearch.maxDepth = readNumber(argument);
    nextSearch.timeControlled = false;
    limitsChanged();
}

// Moves, base time and increment; the base time in minutes or in minutes and seconds, as in 0:30.
void setLevel(std::string_view numbers) {
    constexpr i32 mostMinutes = 100000;
    LevelClock& clock = nextSearch.levelClock;
    clock.levelMoves = takeArgument(numbers);
    const std::string_view base = numbers.substr(0, numbers.find(' '));
    const std::size_t colon = base.find(':');
    const i32 seconds = colon == std::string_view::npos ? 0 : readNumber(base.substr(colon + 1));
    clock.levelMinutes = std::clamp(takeArgument(numbers), -mostMinutes, mostMinutes);
    clock.levelSeconds = std::clamp(seconds, 0, 60 * mostMinutes);
    clock.levelIncrement = takeArgument(numbers);
    clock.remainingCentiseconds = clock.levelMinutes * 6000 + clock.levelSeconds * 100;
    nextSearch.timeControlled = true;
    limitsChanged();
}

void fritz() {
    fritzMode = !fritzMode;
}

void easy() {
    easyMode = true;
}

void hard() {
    if (!fritzMode) easyMode = false;
}

void computer() {
    computerOpponent = !computerOpponent;
}

void ponderMove(std::string_view move) {
    stopThinking();
    engineSide = gamePosition.sideToMove == White ? engineBlack : engineWhite;
    nextSearch.analyzing = false;
    if (isMoveText(move)) receiveMove(move, true);
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

}  // namespace valku
