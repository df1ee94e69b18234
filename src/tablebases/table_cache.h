#pragma once

#include "chess/types.h"

// Table bytes, read through a cache of decoded blocks that all tables share and that replaces the least
// recently used one (LRU, https://en.wikipedia.org/wiki/Cache_replacement_policies#LRU). Files are opened
// when needed and stay open. For the searching thread only, or for the one thread of a process that does not
// search.

namespace valku {

// What readTableByte gives in place of a byte.
constexpr i32 noTableByte = 32767;

// Bytes, from settings.ini and the option NalimovCache. Stored and shown; the cache always has the same size.
extern i32 TBCacheSize;

extern i32 cacheSlots;  // blocks that the cache holds; 0 until it exists

// Makes the cache, or empties it. If there is no memory for it, that is told on standard output and no cache
// is made.
void initCache();

// They are opened again when needed.
void closeAllTbFiles();

// The byte at `offset` of a block of tableBlockSize bytes of the table, counted over all its parts. `side` is
// 0 for a symmetric class. A byte after the table's end has no meaning. noTableByte if it cannot be read; the
// file then loses its name in classTable, so that no later probe counts on it.
i32 readTableByte(int tbClass, int side, u32 block, u32 offset);

}  // namespace valku
