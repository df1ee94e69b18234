#pragma once

#include "chess/position.h"
#include "platform/shared_value.h"
#include "search/hash_memory.h"
#include "search/search_types.h"

// The transposition table, with a lower and an upper bound side by side in each entry
// (https://www.chessprogramming.org/Transposition_Table). It lies in shared memory. The searching threads of
// all processes that have it open read and write it at the same time; the walks and the pins below write it
// too, on any thread, while their own process does not search.
//
// The races are deliberate. No process ever waits for another: a writer that finds an entry locked drops its
// store, a reader takes a locked entry for a miss, and a reader may still see a half-written entry, since
// testing the lock and copying the entry are two steps. So no node trusts a move from the table without
// checking it.

namespace valku {

constexpr u8 pinnedDepth = 254;       // entries that a user has pinned: never cleared or aged
constexpr u8 mateDepth = 255;         // a proved mate holds at any depth
constexpr int fiftyMoveCaution = 93;  // from this many moves on, entries carry a fifty margin below 7
constexpr i16 noLowerScore = -32768;
constexpr i16 noUpperScore = 32767;

// One position: two bounds, each with its own depth and move.
struct HashEntry {
    u32 lowerMove;  // gave the lower bound; 0 if none
    u32 upperMove;  // had the largest subtree in the last fail-low; 0 if none
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
    static constexpr u8 wasUsedFlag = 1;  // used before the last walk took the mark away

    // Moves that were left until the fifty-move draw, 7 for more than 6.
    int fiftyMargin() const { return (flags >> 3) & 7; }

    // Near the fifty-move draw a score holds only if the position that stored it was no farther from the
    // draw.
    bool holdsAt(int fiftyMoves) const {
        return fiftyMoves < fiftyMoveCaution || fiftyMargin() <= 99 - fiftyMoves;
    }
};

struct HashBucket {
    HashEntry entries[2];
};

static_assert(sizeof(HashEntry) == 24 && sizeof(HashBucket) == 48, "the layout is shared between processes");

// Entries that this process has marked used since the search was prepared. Written by the searching thread,
// and by the thread that prepares the searches.
inline u32 hashUsed = 0;

// Keep the tables from one search to the next. Written by the command thread.
inline SharedFlag PreserveHash{true};

// How far the table has been prepared ahead for the next search, while nobody was thinking. Other than `none`
// only in the process that owns the table, and only while nobody has written to the table since. Written by
// the thread that prepares the searches, and by createHashTable().
enum class HashReadiness { none, aged, cleared };
inline HashReadiness hashReadiness = HashReadiness::none;

// Walks over the whole table, only while no search runs. They stop early when the process is about to end.

// Clears a new table. The system provides a page when it is first written: here, and not on the clock of the
// first search that gets there.
void zeroHashTable();

// Forgets all positions but the pinned ones.
void clearHashTable();

// Takes the used marks away, so that the entries are the first to be replaced; their bounds stay valid.
void ageHashTable();

// Used entries per mille.
u32 hashFull();

// Looks a position up and marks the entry used. False on a miss, which a locked entry counts as; `found` is
// then untouched. Searching thread only.
bool probeHash(const StateRecord& state, HashEntry& found);

// The lower-bound move of a position, 0 if it has none. A lock does not hide it.
Move readPvMove(const StateRecord& state);

// Prefetching: brings a bucket into the cache ahead of its probe. Always inlined, since a compiler that sees
// it as a call without effect drops it.
[[gnu::always_inline]] inline void prefetchHash(u32 hashLow) {
    const char* bucket = reinterpret_cast<const char*>(&hashTable[hashLow & hashMask]);
    __builtin_prefetch(bucket);
    __builtin_prefetch(bucket + sizeof(HashBucket) - 1);
}

// Stores a bound of the node at `ply`; mate scores are stored relative to the node. Nothing is stored after a
// stop. Searching thread only.
void storeLowerBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility);
void storeUpperBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility);

// A stored score relative to the root, as the node at `ply` needs it.
constexpr i32 scoreFromTable(i32 score, int ply) {
    if (score >= mateThreshold) return score - ply;
    if (score <= -mateThreshold) return score + ply;
    return score;
}

// Fixes the value of a position (White's view) until it is unpinned; only a proved mate overrides it.
void pinPosition(const Position& position, i32 value);
void unpinPosition(const Position& position);

}  // namespace valku
