#include "protocol/book_commands.h"

#include <string>

#include "book/book_editing.h"
#include "book/book_file.h"
#include "book/book_import.h"
#include "book/book_report.h"
#include "platform/fault.h"
#include "platform/text_sink.h"
#include "protocol/console.h"
#include "protocol/engine_services.h"
#include "protocol/game.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

void importText(std::string_view path) {
    if (!isSettled()) return;
    try {
        importTextBook(std::string(path));
    } catch (const Fault& fault) {
        sendText(fault.text() + "\n");
        engineServices->quit(1);
    }
    snapshotKings();
    printBoard();
}

void importPgn(std::string_view path) {
    if (path.empty()) throw Fault("Error: no filename given!");
    stopThinking();
    importPgnBook(std::string(path), resetGame);
    snapshotKings();
    printBoard();
}

void writeBook(std::string_view path) {
    if (isSettled()) saveBook(std::string(path));
}

void showBook() {
    if (isSettled()) showBookMoves(pondering);
}

void addMoveToBook(std::string_view text) {
    if (isSettled()) receivedAddMove(text);
}

void removeMoveFromBook(std::string_view text) {
    if (isSettled()) receivedRMMove(text);
}

}  // namespace valku
