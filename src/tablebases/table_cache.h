#pragma once

#include "chess/types.h"

// Table bytes, read through a cache of blocks that all tables share. Files are opened when they are needed
// and stay open. Only the searching thread comes here.

namespace valku {

// What readTableByte gives in place of a byte.
constexpr i32 noTableByte = 32767;

extern i32 TBCacheSize;  // bytes that the user asks for; stored and shown, the cache always has the same size
extern i32 cacheSlots;   // blocks that the cache holds; 0 until it is there

// Makes the cache, or empties it. Without the memory there is a line on standard output and no cache.
void initCache();

// Closes all open files, if there is a cache or `force` is set. They are opened again when needed.
void closeAllTbFiles(bool force);

// Room for reading compressed files: 0, or an error code (compressed_header.h).
i32 allocateDecodeBlock();
void freeDecodeBlock();

// The byte at `offset` of a block of tableBlockSize bytes of the table, counted over all its parts. `side` is
// 0 for a symmetric class. A byte behind the table's end means nothing. noTableByte if it cannot be read; the
// file then loses its name in classTable.
i32 readTableByte(int tbClass, int side, u32 block, u32 offset);

}  // namespace valku
