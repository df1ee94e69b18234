#pragma once

#include <string_view>

#include "chess/types.h"
#include "platform/shared_value.h"
#include "thinking/search_request.h"

// The game that is played, whatever the front-end: the commands that change it, and what is known of it
// beside the board. On the thread that reads the commands, but for the snapshot.

namespace valku {

enum EngineSide : int { engineWhite = 0, engineBlack = 1, engineNone = 2 };

// The side that the engine plays.
inline int engineSide = engineBlack;

// What the next search is asked for, as the commands so far have it.
inline SearchRequest nextSearch;

// The kings and the side to move of the game as the interface sees it. While a ponder search runs, the board
// already holds the expected reply. Both threads take it.
struct GameSnapshot {
    SharedNumber whiteKing{noSquare};
    SharedNumber blackKing{noSquare};
    SharedNumber sideToMove{White};
};

inline GameSnapshot gameSnapshot;

// Takes the snapshot of gamePosition.
void snapshotKings();

// Starts a search of gamePosition. The engine must be idle.
void startSearch(bool asPonderSearch = false);

// nextSearch has been changed: also for what the engine begins by itself.
void limitsChanged();

// The engine plays the side that is to move.
void takeSideToMove();

// The state of a new game. The engine must be idle.
void resetGame();

// False, with the old position kept, if the text is no position. The engine must be idle.
bool setFen(std::string_view fen);

// The commands of these names. `go` is that of every protocol; the arguments count for UCI alone.
void newGame();
void force();
void undo();
void undoTwice();
void analyze();
void exitAnalysis();
void goCommand(std::string_view arguments);

}  // namespace valku
