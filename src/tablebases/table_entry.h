#pragma once

#include "chess/position.h"

namespace valku {

// A place in a table.
struct TbEntry {
    i32 tbClass;
    i32 side;  // to move; 0: the first-named
    u64 index;
};

// The entry of a position; a right to capture en passant is not looked at. False if its class has no file.
bool entryOfPosition(const Position& position, TbEntry& entry);

// Sets up the legal position that an entry stands for, White holding the first-named men: no castling rights,
// no en passant field. False if it stands for none: `position` is then undefined.
bool positionOfEntry(const TbEntry& entry, Position& position);

// Entries of the table: up to the last one that stands for a legal position, and the en passant tail. Found
// by a scan from the top, at a great cost; classTable has the results.
u64 tableLength(int tbClass, int side);

}  // namespace valku
