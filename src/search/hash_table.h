#pragma once

#include "chess/position.h"
#include "platform/shared_value.h"
#include "search/search_types.h"

// The transposition table. It lies in shared memory, where child processes read and write it too. No process
// ever waits for another: a writer that finds an entry locked drops its store, a reader takes a locked entry
// for a miss, and a reader may still see a half-written entry, since testing the lock and copying the entry
// are two steps. That is meant: no node trusts a move from the table without a look at it.

namespace valku {

constexpr u8 pinnedDepth = 254;  // entries that a user has pinned: never cleared or aged
constexpr u8 mateDepth = 255;    // a proved mate holds at any depth
constexpr i16 noLowerScore = -32768;
constexpr i16 noUpperScore = 32767;

// One position with a lower and an upper bound side by side, each with its own depth and move.
struct HashEntry {
    u32 lowerMove;  // gave the lower bound; 0 if none
    u32 upperMove;  // the largest subtree of the last fail-low; 0 if none
    u32 check;      // hashHigh of the position
    i16 lowerScore;
    i16 upperScore;
    u8 lowerDepth;  // quarter plies
    u8 upperDepth;
    u8 mobility;  // low 8 bits of the side to move's mobility
    u8 flags;     // usedFlag, wasUsedFlag, and the fifty margin in bits 3 to 5
    u8 lock;      // 1 while a writer is at work
    u8 unused[3];

    static constexpr u8 usedFlag = 2;     // stored or found in the current search
    static constexpr u8 wasUsedFlag = 1;  // had the used mark when the last walk took it away

    int fiftyMargin() const { return (flags >> 3) & 7; }
};

struct HashBucket {
    HashEntry entries[2];
};

static_assert(sizeof(HashEntry) == 24 && sizeof(HashBucket) == 48, "the layout is shared between processes");

extern HashBucket* hashTable;
extern u64 nHashTables;          // buckets, a power of two
extern u64 hashMask;             // nHashTables - 1
extern i32 sharedTableId;        // names the shared memory; -1 before there is one
extern u32 hashUsed;             // entries that this process has marked used since the search was prepared
extern SharedFlag PreserveHash;  // keep the tables from one search to the next

// What has been done ahead for the next search, in the time when nobody thinks. Only ever more than nothing
// in the process that owns the table, and only while nobody has written to the table since. Written by the
// thread that prepares the searches, and by whoever makes a table while there is none.
enum class HashReadiness { none, aged, cleared };
extern HashReadiness hashReadiness;

// A table's size from the mebibytes that a user asks for: the largest power of two of buckets that fits.
u64 bucketsForMegabytes(i64 megabytes);

// The largest power of two not above x; 1 for x under 2.
u64 floorPowerOfTwo(i64 x);

// Rounds down to a power of two. For the next table to be created.
void setHashBuckets(i64 buckets);

// Creates the table under the first free id, all zero and every page of it in memory, or opens and clears the
// one of sharedTableId when that is given; false if there is none to open. Failures of the memory are thrown
// as std::string. Only while no search runs; the same goes for the next three. The walks over the table leave
// off when the process is about to end.
bool createHashTable();
void releaseHashTable();
void clearHashTable();
void ageHashTable();

// Used entries per mille.
u32 hashFull();

// Looks a position up and marks the entry used. False on a miss, which a locked entry counts as; `found` is
// then untouched. Search thread only.
bool probeHash(const StateRecord& state, HashEntry& found);

// The lower-bound move of a position, 0 if it has none. A lock does not hide it.
Move readPvMove(const StateRecord& state);

// Brings a bucket into the cache ahead of its probe. Inlined always: a compiler that looks at it as a call
// sees no effect and drops it.
[[gnu::always_inline]] inline void prefetchHash(u32 hashLow) {
    const char* bucket = reinterpret_cast<const char*>(&hashTable[hashLow & hashMask]);
    __builtin_prefetch(bucket);
    __builtin_prefetch(bucket + sizeof(HashBucket) - 1);
}

// Stores a bound of the node at `ply`. Mate scores are counted from the node itself. Nothing is stored after
// a stop.
void storeLowerBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility);
void storeUpperBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility);

// A stored score as the node at `ply` counts it.
constexpr i32 scoreFromTable(i32 score, int ply) {
    if (score >= mateThreshold) return score - ply;
    if (score <= -mateThreshold) return score + ply;
    return score;
}

// Fixes the value of a position (White's view) until it is unpinned; only a proved mate overrides it.
void pinPosition(const Position& position, i32 value);
void unpinPosition(const Position& position);

}  // namespace valku
