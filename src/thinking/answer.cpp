#include "thinking/answer.h"

#include "book/book_choice.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "platform/clock.h"
#include "search/stop_word.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"
#include "thinking/search_observer.h"

namespace valku {

namespace {

// The search has nothing more to do. timeUsedUp makes a ponder hit end the wait at once.
void awaitEndOfPondering() {
    if (!pondering) return;
    setTimeUsedUp(true);
    while (pondering && !searchStopped()) sleepMilliseconds(1);
    setTimeUsedUp(false);
}

// Makes the move on gamePosition and reports it; `bookValue` is its letter if it comes from the book.
void giveAnswer(Move move, std::optional<char> bookValue = {}) {
    beginAnswer();
    searchObserver->moveChosen(move);
    changeGame([&] { playGameMove(move); });
    if (bookValue) {
        searchObserver->bookMoveMade(move, *bookValue);
    } else {
        searchObserver->moveMade();
    }
}

bool isInterfaceKeeper(const SearchRequest& request) {
    return request.gameKeeper == GameKeeper::interface;
}

}  // namespace

bool tryBookMove(const SearchRequest& request) {
    if (request.analyzing) return false;
    const std::optional<BookMove> picked = pickBookMove(gamePosition);
    if (!picked) return false;
    const Move move = withPromotion(findLegalMove(picked->from, picked->to, gamePosition), picked->promotion);
    if (move == nullMove) return false;

    allowStop();
    awaitEndOfPondering();
    forgoPondering();
    if (abortThinking || (pondering && !isInterfaceKeeper(request))) return true;
    giveAnswer(move, static_cast<char>(picked->value));
    return true;
}

void answerWithBestMove(const SearchRequest& request) {
    if (!isInterfaceKeeper(request) && (pondering || abortThinking)) return;
    mainLine.moves[0] = bestMove;  // an iteration that was stopped has cleared it
    giveAnswer(bestMove);
}

void answerNothing(const SearchRequest& request) {
    allowStop();
    if (!isInterfaceKeeper(request)) awaitEndOfPondering();
    beginAnswer();
}

}  // namespace valku
