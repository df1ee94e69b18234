#include "protocol/uci.h"

#include <algorithm>
#include <sstream>
#include <string>

#include "chess/fen.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "distributed/process_role.h"
#include "platform/format_text.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/engine_name.h"
#include "protocol/game.h"
#include "protocol/parameters.h"
#include "protocol/protocol_mode.h"
#include "search/hash_table.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

constexpr i32 leastUciDepth = 5;

bool holds(std::string_view text, std::string_view word) {
    return text.find(word) != std::string_view::npos;
}

// The number after a word and one blank; 0 if the word does not stand in the text.
i32 numberAfter(std::string_view text, std::string_view word) {
    const std::size_t at = text.find(word);
    if (at == std::string_view::npos || at + word.size() + 1 > text.size()) return 0;
    return readNumber(text.substr(at + word.size() + 1));
}

// `positionPart` is "startpos" or "fen " and a FEN; `movePart` holds the moves that lead on from there. An
// unreadable FEN leaves everything as it was; from the first move that is not legal on the rest of the list
// is dropped.
void setPosition(std::string_view positionPart, std::string_view movePart) {
    positionPart = positionPart.substr(0, positionPart.find_last_not_of(' ') + 1);
    const bool start = positionPart == "startpos";
    if (!start && positionPart.size() < 4) return;
    if (!readFen(start ? std::string_view(startPositionFen) : positionPart.substr(4))) return;
    while (!movePart.empty()) {
        const Move move = uciTextToMove(takeWord(movePart), gamePosition);
        if (move == nullMove) break;
        playGameMove(move);
    }
    snapshotKings();
}

u64 nodesPerSecond(u64 milliseconds) {
    return totalNodes * 1000 / (milliseconds > 0 ? milliseconds : 1);
}

}  // namespace

void sendUciIdentification() {
    settleProtocol(protocolUci);
    easyMode = true;
    std::string text("id name ");
    text.append(engineName).append("\nid author ").append(engineAuthor).append("\n");
    sendText(text + optionDeclarations() + "uciok\n");
}

void isReady() {
    if (processRole == roleRoot) {
        isSettled();  // what follows an answer is waited for, so that it does not delay the next search
        awaitReadiness();
    }
    sendText("readyok\n");
}

void setOptionCommand(std::string_view text) {
    const std::size_t at = text.find("value");
    std::string_view name = text;
    std::string_view value;
    if (at != std::string_view::npos) {
        const std::size_t valueAt = at + 6;
        name = text.substr(0, at > 0 ? at - 1 : 0);
        if (valueAt < text.size()) value = text.substr(valueAt);
    }
    if (needsIdleEngine(name)) finishThinking();
    setOption(name, value);
}

void positionCommand(std::string_view text) {
    const std::size_t at = text.find("moves");
    finishThinking();
    if (at == std::string_view::npos) {
        setPosition(text, {});
        return;
    }
    std::string_view moves = text.substr(at + 5);
    if (!moves.empty()) moves.remove_prefix(1);
    setPosition(text.substr(0, at > 0 ? at - 1 : 0), moves);
}

void goUci(std::string_view arguments) {
    takeSideToMove();
    nextSearch.uciClock = {};
    nextSearch.infiniteSearch = false;
    if (holds(arguments, "showeval")) {
        nextSearch.timeControlled = false;
        nextSearch.maxDepth = 1;
        startSearch(pondering);
        return;
    }
    nextSearch.uciClock = {.wtime = numberAfter(arguments, "wtime"),
                           .btime = numberAfter(arguments, "btime"),
                           .winc = numberAfter(arguments, "winc"),
                           .binc = numberAfter(arguments, "binc"),
                           .movestogo = numberAfter(arguments, "movestogo")};
    nextSearch.timeControlled = true;
    if (holds(arguments, "depth")) {
        nextSearch.maxDepth = std::max(numberAfter(arguments, "depth"), leastUciDepth);
        nextSearch.timeControlled = false;
    }
    if (holds(arguments, "infinite")) {
        nextSearch.infiniteSearch = true;
        nextSearch.timeControlled = true;
    }
    startSearch(holds(arguments, "ponder"));
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

}  // namespace valku
