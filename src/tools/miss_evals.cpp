#include "tools/miss_evals.h"

#include <cstdlib>
#include <optional>

#include "chess/fen.h"
#include "chess/side.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/raw_io.h"
#include "platform/text_sink.h"
#include "protocol/console.h"
#include "protocol/game.h"
#include "thinking/search_control.h"
#include "tools/engine_games.h"

namespace valku {

namespace {

enum class Outcome { lost, drawn, won };

// Whether the sides have about the same men, pawns aside. Other positions are left out.
bool isBalanced(const Position& p) {
    const auto areNear = [](i32 white, i32 black) { return std::abs(white - black) <= 2; };
    return areNear(knightCountOf<White>(p), knightCountOf<Black>(p)) &&
           areNear(bishopCountOf<White>(p), bishopCountOf<Black>(p)) &&
           areNear(rookCountOf<White>(p), rookCountOf<Black>(p)) &&
           areNear(queenCountOf<White>(p), queenCountOf<Black>(p));
}

// The result from the engine's side. Nothing if the game has none.
std::optional<Outcome> outcomeOf(const PgnGame& game) {
    if (game.result == PgnResult::draw) return Outcome::drawn;
    if (game.result != PgnResult::whiteWon && game.result != PgnResult::blackWon) return std::nullopt;
    const PgnResult win = engineColor(game) == White ? PgnResult::whiteWon : PgnResult::blackWon;
    return game.result == win ? Outcome::won : Outcome::lost;
}

// Of values in pawns.
bool isMiss(double own, double opponent, Outcome outcome) {
    if (own - opponent <= 1.0) return false;
    return (own > 0.5 && outcome != Outcome::won) || (own >= -0.5 && outcome == Outcome::lost);
}

const char* resultText(PgnResult result) {
    switch (result) {
        case PgnResult::whiteWon:
            return " (1-0)\n";
        case PgnResult::blackWon:
            return " (0-1)\n";
        default:
            return " (½-½)\n";
    }
}

// False if the engine is to end.
bool show(const PgnPly& ply, double own, double opponent) {
    const PgnGame& game = ply.game;
    sendText(std::string(game.white) + " - " + std::string(game.black) + " (" + std::string(game.resultText) +
             "): " + writeFen(ply.position) + "\n");
    sendText(formatText("own: %.2f ; opp: %.2f ", own, opponent) + resultText(game.result));
    showEvaluation();
    std::string key;
    standardInput().readLine(key);
    return key != "quit" ||
           !commandStopped();  // a `quit` from before the command is an answer like any other
}

class MissSearch {
  public:
    // False if the engine is to end.
    bool see(const PgnPly& ply) {
        if (ply.ply <= 1) gameDone = false;
        if (gameDone || commandStopped() || ply.ply == 0 || !engineIsToMove(ply) || !isBalanced(ply.position))
            return true;
        const std::optional<Outcome> outcome = outcomeOf(ply.game);
        const double own = commentOf(ply.game, ply.ply).value;
        const double opponent = -commentOf(ply.game, ply.ply - 1).value;
        if (!outcome || !isMiss(own, opponent, *outcome)) return true;
        gameDone = true;
        return show(ply, own, opponent);
    }

  private:
    bool gameDone = false;  // a position of the game has been shown
};

}  // namespace

bool checkMissEvals(const std::string& file) {
    stopThinking();
    resetGame();
    const LongCommand longCommand;
    MissSearch search;
    return !walkPgnFile(
        file, [&](const PgnPly& ply) { return search.see(ply); }, PgnGame::maxPlies);
}

}  // namespace valku
