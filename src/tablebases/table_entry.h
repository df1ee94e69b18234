#pragma once

#include "chess/position.h"

namespace valku {

// A place in a table.
struct TbEntry {
    i32 tbClass;
    i32 side;  // to move; 0 = first-named
    u64 index;
};

// The entry of a position that has no right to capture en passant. False if its class has no file.
bool entryOfPosition(const Position& position, TbEntry& entry);

// Sets up the legal position that an entry stands for, White holding the first-named men: no castling rights,
// no en passant field. False if it stands for none: then `position` is spoilt.
bool positionOfEntry(const TbEntry& entry, Position& position);

// Entries of the table: the last one that stands for a legal position and those before it, and the en passant
// tail. Found by a scan from the top; classTable keeps the results.
u64 tableLength(int tbClass, int side);

}  // namespace valku
