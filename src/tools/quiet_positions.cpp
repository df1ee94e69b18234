#include "tools/quiet_positions.h"

#include <optional>
#include <set>

#include "book/pgn_reader.h"
#include "chess/fen.h"
#include "chess/random.h"
#include "platform/file_replacement.h"
#include "platform/long_command.h"
#include "platform/text_sink.h"
#include "protocol/game.h"
#include "thinking/search_control.h"
#include "tools/position_values.h"

namespace valku {

namespace {

constexpr const char* outputName = "testPosEval.txt";

i32 randomUpTo(i32 limit) {
    return static_cast<i32>(nextRandom() * limit);
}

class QuietPositions {
  public:
    void see(const PgnPly& ply) {
        newest.reset();
        if (ply.ply <= 1) {
            skip = 15 + randomUpTo(30);
        } else if (skip > 0) {
            --skip;
        } else if (staticValue(ply.position) == quiescenceValue(ply.position)) {
            const auto [place, isNew] = fens.insert(writeFen(ply.position));
            if (isNew) newest = place;
            skip = 15 + randomUpTo(20);
        }
    }

    // The position of the last move of all is not part of the collection.
    void end() {
        if (newest) fens.erase(*newest);
        write();
    }

  private:
    void write() const {
        FileReplacement output(outputName);
        for (const std::string& fen : fens) output.write(fen + '\n');
        if (!output.putInPlace()) sendText(std::string("Error: could not write ") + outputName + "!\n");
    }

    std::set<std::string> fens;
    std::optional<std::set<std::string>::iterator> newest;  // inserted by the last call
    i32 skip = 0;
};

}  // namespace

void generateTestposEval(const std::string& file) {
    stopThinking();
    resetGame();
    const LongCommand longCommand;
    QuietPositions positions;
    const auto visitor = [&](const PgnPly& ply) {
        positions.see(ply);
        return true;
    };
    walkPgnFile(file, visitor, PgnGame::maxPlies, [&] { positions.end(); });
}

}  // namespace valku
