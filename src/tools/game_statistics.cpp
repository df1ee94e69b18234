#include "tools/game_statistics.h"

#include <algorithm>

#include "chess/fen.h"
#include "chess/move_text.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/text_sink.h"
#include "protocol/game.h"
#include "thinking/search_control.h"
#include "tools/engine_games.h"

namespace valku {

namespace {

constexpr i32 firstPlyLeftOut = 61;
constexpr i32 leastDepth = 8;  // shallower moves are listed
constexpr i32 depthLimit = 100;

class DepthStatistics {
  public:
    void see(const PgnPly& ply) {
        if (ply.ply >= firstPlyLeftOut || !engineIsToMove(ply)) return;
        const MoveComment comment = commentOf(ply.game, ply.ply);
        if (!comment.present) return;
        ++counter;
        // A comment can claim any depth; the table has room for these.
        ++depthCounts[std::clamp(comment.depth, 0, depthLimit)];
        if (comment.depth < leastDepth) list(ply, comment.depth);
    }

    std::string report() const {
        std::string text = shallowMoves + formatText("counter = %u\n", counter);
        u64 sum = 0;
        const double all = std::max(counter, 1u);
        for (i32 depth = 0; depth <= depthLimit; ++depth) {
            const u32 count = depthCounts[depth];
            sum += u64{count} * static_cast<u64>(depth);
            text += formatText("%u ply: %u (%.2f%%)\n", static_cast<u32>(depth), count, 100.0 * count / all);
        }
        return text + formatText("average search depth: %.2f ply\n", static_cast<double>(sum) / all);
    }

  private:
    void list(const PgnPly& ply, i32 depth) {
        const PgnGame& game = ply.game;
        shallowMoves += "game " + std::string(game.white) + " - " + std::string(game.black) + " (" +
                        std::string(game.resultText) + ")" +
                        formatText(", moveNr = %i: depth = %i\n", ply.ply, depth) +
                        "position = " + writeFen(ply.position) + "\nmove = " + moveToText(ply.move) + "\n";
    }

    u32 counter = 0;
    u32 depthCounts[depthLimit + 1] = {};
    std::string shallowMoves;
};

}  // namespace

void gameStats(const std::string& file) {
    stopThinking();
    resetGame();
    const LongCommand longCommand;
    DepthStatistics statistics;
    const auto visitor = [&](const PgnPly& ply) {
        statistics.see(ply);
        return true;
    };
    walkPgnFile(file, visitor, PgnGame::maxPlies, [&] { sendText(statistics.report()); });
}

}  // namespace valku
