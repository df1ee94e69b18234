#include "thinking/book_answer.h"

#include "book/book_choice.h"
#include "chess/game.h"
#include "chess/move_text.h"
#include "platform/clock.h"
#include "search/process_state.h"
#include "search/stop_word.h"
#include "thinking/search_control.h"
#include "thinking/search_observer.h"
#include "thinking/thinking_state.h"

namespace valku {

namespace {

// The move stands ready; timeUsedUp lets whoever ends the pondering end the wait at once.
void awaitEndOfPondering() {
    timeUsedUp = true;
    while (pondering && !stopSignalOutside()) sleepMilliseconds(1);
    timeUsedUp = false;
}

}  // namespace

bool tryBookMove() {
    if (analyzing) return false;
    const std::optional<BookMove> picked = pickBookMove(gamePosition);
    if (!picked) return false;
    const Move move = withPromotion(findLegalMove(picked->from, picked->to, gamePosition), picked->promotion);
    if (move == nullMove) return false;

    minimalSearchPending = false;
    if (pondering) awaitEndOfPondering();
    noAutoPonder = true;
    if (abortThinking || (pondering && protocolMode != protocolUci)) return true;
    answerGiven = true;
    searchObserver->moveChosen(move);
    changeGame([&] { playGameMove(move); });
    searchObserver->bookMoveMade(move, static_cast<char>(picked->value));
    return true;
}

}  // namespace valku
