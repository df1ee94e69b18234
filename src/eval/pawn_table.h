#pragma once

#include "chess/position.h"
#include "eval/pawn_structure.h"

// The pawn hash table (https://www.chessprogramming.org/Pawn_Hash_Table). A new entry always replaces the
// old.

namespace valku {

extern PawnEntry* pawnTable;  // written by createPawnTable()
extern u64 nPawnTables;  // number of entries, a power of two; a setting until createPawnTable() is called

// Replaces the table by an empty one of nPawnTables entries. Without memory for that, halves nPawnTables
// until it fits. Pages take up memory when they are first used. Only between searches.
void createPawnTable();

// Empties the table. Only between searches.
void clearPawnTable();

// The entry for the pawns of searchPosition, computed if it is missing. Valid until the next call. One thread
// at a time.
inline const PawnEntry* probePawnTable() {
    const u64 key = searchPosition.state->pawnHash;
    PawnEntry& entry = pawnTable[key & (nPawnTables - 1)];
    if (entry.key != key || !entry.used) [[unlikely]]
        buildPawnEntry(entry);
    return &entry;
}

}  // namespace valku
