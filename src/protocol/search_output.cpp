#include "protocol/search_output.h"

#include "chess/move_text.h"
#include "platform/clock.h"
#include "protocol/console.h"
#include "protocol/game.h"
#include "protocol/game_result.h"
#include "thinking/main_line.h"

namespace valku {

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

std::string tablebaseRate() {
    return std::to_string(totalTbHits) + "/" + std::to_string(totalTbProbes);
}

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

}  // namespace valku
