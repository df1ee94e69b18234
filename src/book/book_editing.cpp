#include "book/book_editing.h"

#include <string>

#include "book/book_report.h"
#include "book/opening_book.h"
#include "chess/move_text.h"
#include "chess/side.h"
#include "platform/fault.h"

namespace valku {

namespace {

struct EditedMove {
    int from;
    int to;
    u8 promotion = 0;
    std::string_view rest{};  // after the move
};

template <Color Us>
bool isPromotion(int from, int to) {
    using S = Side<Us>;
    return gamePosition.board[from] == S::pawn && S::relativeRank(from) == 6 && S::relativeRank(to) == 7;
}

// `reader` is the name of the calling function, for the text of a fault.
template <Color Us>
EditedMove readMove(std::string_view text, const std::string& reader) {
    EditedMove move{};
    if (!textToSquares(text, move.from, move.to))
        throw Fault("error in " + reader + ": coordinates out of range!");
    move.rest = text.substr(4);
    if (!isPromotion<Us>(move.from, move.to)) return move;
    move.promotion = move.rest.empty() ? u8{0} : promotionPiece(move.rest.front(), Us);
    if (!move.promotion) throw Fault("error in receivedAddMove: promotion error!");
    move.rest.remove_prefix(1);
    return move;
}

EditedMove readMoveOfMover(std::string_view text, const char* reader) {
    return gamePosition.sideToMove == White ? readMove<White>(text, reader) : readMove<Black>(text, reader);
}

}  // namespace

void receivedAddMove(std::string_view text) {
    const EditedMove move = readMoveOfMover(text, "receivedAddMove");
    if (move.rest.empty() || !isBookValue(move.rest.front()))
        throw Fault("error in receivedAddMove: value out of range!");
    if (findLegalMove(move.from, move.to, gamePosition) == nullMove)
        throw Fault("error in receivedAddMove: illegal move!");
    const BookGrowth growth;
    addBookMove(gamePosition, makeMoveWord(move.from, move.to, move.promotion), move.rest.front(),
                Overwrite::always);
    growth.report();
}

void receivedRMMove(std::string_view text) {
    const EditedMove move = readMoveOfMover(text, "receivedRMMove");
    const StateRecord& state = *gamePosition.state;
    const BookMove bookMove{static_cast<u8>(move.from), static_cast<u8>(move.to), move.promotion, 0};
    if (!removeBookMove(state.hashHigh, state.hashLow, bookMove))
        throw Fault("error in receivedRMMove: move not found in book!");
    reportBookSize();
}

}  // namespace valku
