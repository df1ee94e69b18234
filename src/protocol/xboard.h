#pragma once

#include <string_view>

#include "platform/shared_value.h"
#include "protocol/search_output.h"

// The XBoard front-end (https://www.chessprogramming.org/Chess_Engine_Communication_Protocol): clocks,
// pondering, and a search in its words. The commands of the game itself, which a person types too, stand in
// game.h. On the thread that reads the commands.

namespace valku {

// Settles on XBoard and sends the features.
void sendXboardFeatures();

// `time`: what is left on the engine's clock, in hundredths of a second.
void setClock(std::string_view argument);

// `sd`: the depth of every search, in plies.
void setDepth(std::string_view argument);

// `level`: moves, base time and increment.
void setLevel(std::string_view numbers);

// Pondering off, on, and the word that makes "hard" have no effect.
void easy();
void hard();
void fritz();

// `ponder`: a move that the opponent is expected to make.
void ponderMove(std::string_view move);

// The opponent is an engine, or is not.
void computer();

inline SharedFlag computerOpponent{false};  // kibitz instead of whisper; read by the thinking thread

class XboardOutput final : public SearchOutput {
  public:
    void mainLineFound(i32 depth, i32 score, const Line& line, bool failHigh) override;
    void moveChosen(Move move) override;

  private:
    void sendMove() override;
    void announceMove() override;
    void announceBookValue(char value) override;
    Move chosenMove = 0;
};

}  // namespace valku
