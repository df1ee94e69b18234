#include "protocol/edit_mode.h"

#include <string>

#include "chess/edited_board.h"
#include "chess/fen.h"
#include "chess/move_text.h"
#include "platform/text_sink.h"
#include "protocol/console.h"
#include "protocol/game.h"
#include "protocol/protocol_mode.h"
#include "protocol/xboard.h"
#include "thinking/search_control.h"

namespace valku {

namespace {

EditedBoard board;
Color placedColor = White;
bool boardTaken = false;
Color savedSideToMove = White;  // at the beginning of the edit; the game may move on before its end

struct Fault {
    BoardFault fault;
    const char* text;
};

constexpr Fault faults[] = {
    {BoardFault::kings, "each side must have exactly one king"},
    {BoardFault::tooManyMen, "a side has more men than there are"},
    {BoardFault::pawnRank, "a pawn stands on the first or last rank"},
    {BoardFault::check, "the side that is not to move is in check"},
};

// A board that the engine was too busy to hand over is taken later.
bool isBoardAtHand() {
    if (!isSettled()) return false;
    if (!boardTaken) {
        board.take(gamePosition);
        boardTaken = true;
    }
    return true;
}

void refuse(BoardFault found) {
    std::string text = "Error: ";
    if (protocolMode == protocolXboard) text = "tellusererror Illegal position: ";
    if (protocolMode == protocolUci) text = "info string Error: ";
    for (const Fault& row : faults) {
        if (row.fault == found) text += row.text;
    }
    sendText(text + "; the position stays as it was\n");
}

void finishEdit() {
    if (!isBoardAtHand()) return;
    const BoardFault fault = board.setUp(savedSideToMove);
    if (fault != BoardFault::none) {
        refuse(fault);
        return;
    }
    computerOpponent = false;
    snapshotKings();
    printBoard();
}

void placeMan(std::string_view line) {
    if (line.size() < 3) return;
    const int square = textToSquare(line.substr(1));
    if (square == noSquare) return;
    const u8 white = codeOfLetter(line[0]);
    if (!isManOf(White, white)) return;  // capitals name the men of either color
    board.place(placedColor == White ? white : otherColor(white), square);
}

}  // namespace

void beginEdit() {
    editMode = true;
    boardTaken = false;
    placedColor = White;
    isBoardAtHand();
    savedSideToMove = static_cast<Color>(copyGame().sideToMove);
}

void editCommand(std::string_view line) {
    if (line == ".") {
        finishEdit();
        editMode = false;
        return;
    }
    if (!isBoardAtHand()) return;
    if (line == "c") {
        placedColor = ~placedColor;
    } else if (line == "#") {
        board.clear();
    } else {
        placeMan(line);
    }
}

}  // namespace valku
