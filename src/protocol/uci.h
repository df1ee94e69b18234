#pragma once

#include <string_view>

namespace valku {

// Settles on UCI and tells name, author and options.
void sendUciIdentification();

void isReady();

// `positionPart` is "startpos" or "fen " and a FEN; `movePart` holds the moves that lead on from there. An
// unreadable FEN leaves everything as it was; from the first move that is not legal on the rest of the list
// is dropped.
void setPosition(std::string_view positionPart, std::string_view movePart);

// Reads clocks and limits and starts a search. UCI mode only; the engine is idle.
void goUci(std::string_view arguments);

}  // namespace valku
