#include "protocol/game_state.h"

#include "chess/position.h"
#include "protocol/protocol_mode.h"
#include "thinking/search_control.h"

namespace valku {

void startSearch(bool asPonderSearch) {
    SearchRequest request = nextSearch;
    request.gameKeeper = protocolMode == protocolUci ? GameKeeper::interface : GameKeeper::engine;
    request.pondering = asPonderSearch;
    requestSearch(request);
}

void limitsChanged() {
    SearchRequest request = nextSearch;
    request.gameKeeper = protocolMode == protocolUci ? GameKeeper::interface : GameKeeper::engine;
    renewLimits(request);
}

void takeSideToMove() {
    engineSide = gamePosition.sideToMove == White ? engineWhite : engineBlack;
}

}  // namespace valku
