#include "protocol/uci.h"

#include <algorithm>
#include <string>

#include "chess/fen.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "distributed/process_role.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/engine_name.h"
#include "protocol/game_snapshot.h"
#include "protocol/game_state.h"
#include "protocol/parameters.h"
#include "protocol/protocol_mode.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

constexpr i32 leastUciDepth = 5;

bool holds(std::string_view text, std::string_view word) {
    return text.find(word) != std::string_view::npos;
}

// The number behind a word and one blank; 0 if the word does not stand in the text.
i32 numberBehind(std::string_view text, std::string_view word) {
    const std::size_t at = text.find(word);
    if (at == std::string_view::npos || at + word.size() + 1 > text.size()) return 0;
    return readNumber(text.substr(at + word.size() + 1));
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
    nextSearch.uciClock = {.wtime = numberBehind(arguments, "wtime"),
                           .btime = numberBehind(arguments, "btime"),
                           .winc = numberBehind(arguments, "winc"),
                           .binc = numberBehind(arguments, "binc"),
                           .movestogo = numberBehind(arguments, "movestogo")};
    nextSearch.timeControlled = true;
    if (holds(arguments, "depth")) {
        nextSearch.maxDepth = std::max(numberBehind(arguments, "depth"), leastUciDepth);
        nextSearch.timeControlled = false;
    }
    if (holds(arguments, "infinite")) {
        nextSearch.infiniteSearch = true;
        nextSearch.timeControlled = true;
    }
    startSearch(holds(arguments, "ponder"));
}

}  // namespace valku
