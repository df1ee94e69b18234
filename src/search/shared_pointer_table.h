#pragma once

#include "chess/types.h"

// Named shared memory, counted per process: opening a block twice gives one address and needs two clears. The
// name of a block is sharedTableId alone, since the id is all that a child process receives. Start-up, option
// changes and shut-down only; one thread at a time. Failures are thrown as std::string.

namespace valku {

// The address of the block named by sharedTableId, or null if there is no such block.
void* openSharedPointer();

bool isSharedPointerOpen(i32 id);

// The size in bytes of a block that is open here.
u64 sharedPointerSize(i32 id);

// Makes the block; null if somebody else has made one of that name in the meantime. `size` in bytes.
void* createSharedPointer(u64 size);

// Gives one reference back.
void clearSharedPointer(i32 id);

}  // namespace valku
