#pragma once

#include <optional>

#include "book/opening_book.h"
#include "chess/position.h"

namespace valku {

// The picks are random; each process its own.
void seedBookChoice(u64 seed);

// Picks a move of the position by the weights of the values. Nothing if the book has none that may be picked.
// Another position with the same 48 bits of its key may have given a move that is impossible here.
std::optional<BookMove> pickBookMove(const Position& position);

}  // namespace valku
