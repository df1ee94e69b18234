#include "chess/game_end.h"

#include "chess/attacks.h"
#include "chess/move_generation.h"

namespace valku {

namespace {

bool occurredTwiceBefore(const Position& p) {
    int earlier = 0;
    for (const StateRecord* record = p.states; record != p.state; ++record) {
        if (record->hashLow == p.state->hashLow && record->hashHigh == p.state->hashHigh) ++earlier;
    }
    return earlier >= 2;
}

// Two kings, with one minor piece at most.
bool cannotMate(const Position& p) {
    if (p.whiteMen + p.blackMen == 2) return true;
    if (p.whiteMen + p.blackMen != 3) return false;
    return p.whiteKnightCount + p.whiteBishopCount + p.blackKnightCount + p.blackBishopCount == 1;
}

}  // namespace

GameEnd findGameEnd(bool claim) {
    Position p(gamePosition);
    if (claim) {
        if (p.state->fiftyMoves >= 100) return GameEnd::fiftyMoves;
        if (occurredTwiceBefore(p)) return GameEnd::repetition;
    }
    if (cannotMate(p)) return GameEnd::insufficientMaterial;
    MoveList list;
    generateAllMoves(p, list);
    if (countLegalMoves(p, list) > 0) return GameEnd::none;
    if (!inCheck(p)) return GameEnd::stalemate;
    return p.sideToMove == White ? GameEnd::blackMates : GameEnd::whiteMates;
}

}  // namespace valku
