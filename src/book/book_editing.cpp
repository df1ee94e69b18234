#include "book/book_editing.h"

#include "book/book_report.h"
#include "book/opening_book.h"
#include "chess/move_text.h"
#include "chess/side.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

struct EditedMove {
    int from;
    int to;
    u8 promotion = 0;
    std::string_view rest{};  // behind the move
};

bool isCoordinate(std::string_view text) {
    return text.size() >= 2 && text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8';
}

int squareOf(std::string_view text) {
    return makeSquare(text[0] - 'a', text[1] - '1');
}

template <Color Us>
bool isPromotion(int from, int to) {
    using S = Side<Us>;
    return gamePosition.board[from] == S::pawn && S::relativeRank(from) == 6 && S::relativeRank(to) == 7;
}

// The error text, or null if the move could be read.
template <Color Us>
const char* readMove(std::string_view text, const char* outOfRange, EditedMove& move) {
    if (!isCoordinate(text) || !isCoordinate(text.substr(2))) return outOfRange;
    move = {squareOf(text), squareOf(text.substr(2))};
    move.rest = text.substr(4);
    if (!isPromotion<Us>(move.from, move.to)) return nullptr;
    move.promotion = move.rest.empty() ? u8{0} : promotionPiece(move.rest.front(), Us);
    if (!move.promotion) return "error in receivedAddMove: promotion error!\n";
    move.rest.remove_prefix(1);
    return nullptr;
}

const char* readMoveOfMover(std::string_view text, const char* outOfRange, EditedMove& move) {
    return gamePosition.sideToMove == White ? readMove<White>(text, outOfRange, move)
                                            : readMove<Black>(text, outOfRange, move);
}

const char* addMove(std::string_view text) {
    EditedMove move;
    if (const char* error =
            readMoveOfMover(text, "error in receivedAddMove: coordinates out of range!\n", move))
        return error;
    if (move.rest.empty() || !isBookValue(move.rest.front()))
        return "error in receivedAddMove: value out of range!\n";
    if (findLegalMove(move.from, move.to, gamePosition) == nullMove)
        return "error in receivedAddMove: illegal move!\n";
    addBookMove(gamePosition, makeMoveWord(move.from, move.to, move.promotion), move.rest.front(),
                Overwrite::always);
    return nullptr;
}

const char* removeMove(std::string_view text) {
    EditedMove move;
    if (const char* error =
            readMoveOfMover(text, "error in receivedRMMove: coordinates out of range!\n", move))
        return error;
    const i32 movesBefore = bookSize.moves;
    const StateRecord& state = *gamePosition.state;
    removeBookMove(state.hashHigh, state.hashLow, static_cast<u8>(move.from), static_cast<u8>(move.to),
                   move.promotion);
    return bookSize.moves < movesBefore ? nullptr : "error in receivedRMMove: move not found in book!\n";
}

}  // namespace

void receivedAddMove(std::string_view text) {
    const BookGrowth growth;
    if (const char* error = addMove(text)) {
        sendText(error);
    } else {
        growth.report();
    }
}

void receivedRMMove(std::string_view text) {
    if (const char* error = removeMove(text)) {
        sendText(error);
    } else {
        reportBookSize();
    }
}

}  // namespace valku
