#include "book/book_report.h"

#include <string>

#include "chess/move_text.h"
#include "chess/position.h"
#include "platform/format_text.h"
#include "platform/text_sink.h"

namespace valku {

void showBookStats() {
    std::string text = "The book contains:\n";
    for (int i = 0; i < bookValues; ++i)
        text += formatText("%7i moves with value %c\n", bookSize.movesByValue[i], bestBookValue + i);
    sendText(text);
}

void showBookMoves(bool aGuess) {
    const StateRecord& state = *gamePosition.state;
    const std::vector<BookMove> moves = bookMoves(state.hashHigh, state.hashLow);
    if (moves.empty() || aGuess) {
        sendText("No moves for this position in the opening book!\n");
        return;
    }
    std::string text = "The following moves are in the opening book:\n";
    for (const BookMove& move : moves) {
        text += formatText("%s - %s (value %c)\n", squareText(move.from).c_str(), squareText(move.to).c_str(),
                           move.value);
    }
    sendText(text);
}

void reportBookSize() {
    sendText(
        formatText("Book contains %i positions and %i moves now.\n", bookSize.positions, bookSize.moves));
    showBookStats();
}

void BookGrowth::report() const {
    sendText(formatText("...%i new positions, %i new moves.\n", bookSize.positions - positionsBefore,
                        bookSize.moves - movesBefore));
    reportBookSize();
}

}  // namespace valku
