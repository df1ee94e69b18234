#include "tools/miss_evals.h"

#include <cstdlib>

#include "chess/fen.h"
#include "chess/side.h"
#include "eval/game_phase.h"
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

constexpr i32 signatureCount = 12750;
constexpr i32 endgameSignatures = 6375;  // added for endgames
constexpr i32 evenSignature = 3187;

// How often the engine was to move with a balance of material, and how often it misjudged that. Over all runs
// of the process.
u32 seen[signatureCount];
u32 missed[signatureCount];

enum class Outcome { lost, drawn, won };

// Men of each kind, own less the opponent's.
struct Balance {
    i32 pawns, knights, bishops, rooks, queens;

    bool isUsual() const {
        const auto few = [](i32 men) { return std::abs(men) <= 2; };
        return std::abs(pawns) <= 8 && few(knights) && few(bishops) && few(rooks) && few(queens);
    }
};

template <Color Us>
Balance balanceOf(const Position& p) {
    constexpr Color Them = ~Us;
    return {pawnCountOf<Us>(p) - pawnCountOf<Them>(p), knightCountOf<Us>(p) - knightCountOf<Them>(p),
            bishopCountOf<Us>(p) - bishopCountOf<Them>(p), rookCountOf<Us>(p) - rookCountOf<Them>(p),
            queenCountOf<Us>(p) - queenCountOf<Them>(p)};
}

void countIn(u32 (&table)[signatureCount], i32 signature) {
    // Several extreme differences at once lead out of the table.
    if (signature >= 0 && signature < signatureCount) ++table[signature];
}

i32 signatureOf(const Position& p, const Balance& b) {
    const i32 men = (((b.queens * 5 + b.rooks) * 5 + b.bishops) * 5 + b.knights) * 17;
    return men + evenSignature + b.pawns + (isMiddlegame(p) ? 0 : endgameSignatures);
}

// The result from the engine's side. False if the game has none.
bool readOutcome(const PgnGame& game, Outcome& outcome) {
    const PgnResult win = engineColor(game) == White ? PgnResult::whiteWon : PgnResult::blackWon;
    const bool decided = game.result == PgnResult::whiteWon || game.result == PgnResult::blackWon;
    if (!decided && game.result != PgnResult::draw) return false;
    outcome = !decided ? Outcome::drawn : game.result == win ? Outcome::won : Outcome::lost;
    return true;
}

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
    return key != "quit" || !commandStopped();
}

class MissSearch {
  public:
    // False if the engine is to end.
    bool see(const PgnPly& ply) {
        if (ply.ply <= 1) gameDone = false;
        Outcome outcome;
        if (gameDone || commandStopped() || !engineIsToMove(ply) || !readOutcome(ply.game, outcome))
            return true;
        const Position& p = ply.position;
        const Balance balance = p.sideToMove == White ? balanceOf<White>(p) : balanceOf<Black>(p);
        if (!balance.isUsual()) return true;
        const i32 signature = signatureOf(p, balance);
        countIn(seen, signature);
        if (ply.ply == 0) return true;
        const double own = commentOf(ply.game, ply.ply).value;
        const double opponent = -commentOf(ply.game, ply.ply - 1).value;
        if (!isMiss(own, opponent, outcome)) return true;
        countIn(missed, signature);
        gameDone = true;
        return show(ply, own, opponent);
    }

  private:
    bool gameDone = false;
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
