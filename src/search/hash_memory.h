#pragma once

#include "chess/types.h"

// The memory of the transposition table: its size, and the shared block that it lies in. Everything here
// belongs to start-up, option changes and shut-down: one thread at a time, and only while no search runs.
// Failures of the memory are thrown as Fault.

namespace valku {

struct HashBucket;

// Written only by the functions below; read by every node.
inline HashBucket* hashTable = nullptr;  // null before createHashTable()
inline u64 nHashTables = 2097152;        // buckets, a power of two
inline u64 hashMask = 2097152 - 1;       // nHashTables - 1

// Names the shared block; -1 before there is one. Besides the functions below, start-up writes it to join a
// block that the command line names, and an option change to get a new one.
inline i32 sharedTableId = -1;

// A table's size in buckets from the mebibytes that a user asks for: the largest power of two that fits.
u64 bucketsForMegabytes(i64 megabytes);

// The largest power of two not above x; 1 for x under 2.
u64 floorPowerOfTwo(i64 x);

// Rounds down to a power of two. Takes effect with the next createHashTable().
void setHashBuckets(i64 buckets);

// Creates the table under the first free id, all zero and with every page in memory. If sharedTableId is
// given, opens that table and clears it instead; false if there is none.
bool createHashTable();
void releaseHashTable();

// Named blocks of shared memory, counted per process: a block that was opened twice has one address and needs
// two clears. The decimal text of the id is the whole name, since a child process receives nothing but the
// id.

// The address of the block sharedTableId, or null if there is none.
void* openSharedPointer();

// Creates the block sharedTableId of `size` bytes; null if another process has taken the id in the meantime.
void* createSharedPointer(u64 size);

// Gives one reference back.
void clearSharedPointer(i32 id);

}  // namespace valku
