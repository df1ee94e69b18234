#pragma once

#include "chess/position.h"
#include "eval/pawn_structure.h"

// A cache of pawn structures: one entry per index, a new placement overwrites an old one.

namespace valku {

extern PawnEntry* pawnTable;
extern u64 nPawnTables;  // entries of the table, a power of two; a setting until createPawnTable() is called

// Makes an empty table of nPawnTables entries in place of the old one. If the memory cannot be had, the table
// gets smaller and nPawnTables with it. Its pages are not touched before they are used.
void createPawnTable();

// Forgets all entries.
void clearPawnTable();

// The entry for the pawns of searchPosition, built if it is not there. Valid until the next call.
inline const PawnEntry* probePawnTable() {
    const u64 key = searchPosition.state->pawnHash;
    PawnEntry& entry = pawnTable[key & (nPawnTables - 1)];
    if (entry.key != key || !entry.used) [[unlikely]]
        buildPawnEntry(entry);
    return &entry;
}

}  // namespace valku
