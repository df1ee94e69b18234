#include "search/hash_table.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <string>

#include "platform/shared_memory.h"
#include "platform/shut_down.h"
#include "search/shared_pointer_table.h"
#include "search/stop_word.h"

namespace valku {

HashBucket* hashTable = nullptr;
u64 nHashTables = 2097152;
u64 hashMask = 2097152 - 1;
i32 sharedTableId = -1;
u32 hashUsed = 0;
SharedFlag PreserveHash{true};
HashReadiness hashReadiness = HashReadiness::none;

namespace {

constexpr i32 firstTableId = 1234000;
constexpr i32 idsInUse = 256;  // more engines than a machine runs

// A score near the fifty-move draw is not trusted nearer to it.
constexpr int fiftyMarginOf(int fiftyMoves) {
    return fiftyMoves >= 93 && fiftyMoves <= 99 ? 99 - fiftyMoves : 7;
}

// What the two kinds of bound do differently.
struct LowerBound {
    static u8& depth(HashEntry& entry) { return entry.lowerDepth; }
    static i16& score(HashEntry& entry) { return entry.lowerScore; }
    static Move& move(HashEntry& entry) { return entry.lowerMove; }
    static bool isNoBetter(i32 score, i32 stored) { return stored >= score; }
    static bool isProvedMate(i32 score) { return score >= mateThreshold; }
    static void forget(HashEntry& entry) {
        entry.lowerDepth = 0;
        entry.lowerScore = noLowerScore;
        entry.lowerMove = nullMove;
    }
};

struct UpperBound {
    static u8& depth(HashEntry& entry) { return entry.upperDepth; }
    static i16& score(HashEntry& entry) { return entry.upperScore; }
    static Move& move(HashEntry& entry) { return entry.upperMove; }
    static bool isNoBetter(i32 score, i32 stored) { return stored <= score; }
    static bool isProvedMate(i32 score) { return score <= -mateThreshold; }
    static void forget(HashEntry& entry) {
        entry.upperDepth = 0;
        entry.upperScore = noUpperScore;
        entry.upperMove = nullMove;
    }
};

// The one word that processes say to each other. The fences bind the compiler alone: they keep it from
// writing fields outside the lock, or from dropping a lock that it sees nobody look at. Between the
// processes nothing is ordered; two writers may pass the test at once, and the later write wins field by
// field. A process that dies here leaves an entry that nobody uses any more, one of millions.
[[gnu::always_inline]] inline bool isLocked(HashEntry& entry) {
    return std::atomic_ref<u8>(entry.lock).load(std::memory_order_relaxed) != 0;
}

[[gnu::always_inline]] inline void setLock(HashEntry& entry, u8 value) {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    std::atomic_ref<u8>(entry.lock).store(value, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

void markUsed(HashEntry& entry) {
    if (entry.flags & HashEntry::usedFlag) return;
    entry.flags |= HashEntry::usedFlag;
    ++hashUsed;
}

// The entry to write to, or null if the bucket holds better: the position's own entry, else the first one of
// an earlier search, else the shallower one if it is not deeper than the new bound.
template <class Bound>
HashEntry* findVictim(HashBucket& bucket, u32 hashHigh, i32 score, i32 depth) {
    HashEntry* victim = nullptr;
    i32 limit = depth + 1;
    for (HashEntry& entry : bucket.entries) {
        if (entry.check == hashHigh) {
            if (Bound::depth(entry) > depth) return nullptr;
            if (Bound::depth(entry) == depth && Bound::isNoBetter(score, Bound::score(entry))) return nullptr;
            return &entry;
        }
        if (limit == 0) continue;
        if (!(entry.flags & HashEntry::usedFlag)) {
            victim = &entry;
            limit = 0;
        } else if (const i32 deeper = std::max(entry.lowerDepth, entry.upperDepth); deeper < limit) {
            victim = &entry;
            limit = deeper;
        }
    }
    return victim;
}

template <class Bound, class OtherBound>
[[gnu::always_inline]] inline void storeBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth,
                                              Move move, int fiftyMoves, i32 mobility) {
    if (isStopWanted()) return;
    if (Bound::isProvedMate(score)) depth = mateDepth;
    if (score >= mateThreshold) {
        score += ply;
    } else if (score <= -mateThreshold) {
        score -= ply;
    }
    HashEntry* const victim = findVictim<Bound>(hashTable[hashLow & hashMask], hashHigh, score, depth);
    if (!victim || isLocked(*victim)) return;
    setLock(*victim, 1);
    if (victim->check != hashHigh) OtherBound::forget(*victim);
    Bound::score(*victim) = static_cast<i16>(score);
    victim->check = hashHigh;
    Bound::depth(*victim) = static_cast<u8>(depth);
    victim->mobility = static_cast<u8>(mobility);
    Bound::move(*victim) = move;
    if (!(victim->flags & HashEntry::usedFlag)) ++hashUsed;
    victim->flags = static_cast<u8>(fiftyMarginOf(fiftyMoves) * 8 + HashEntry::usedFlag);
    setLock(*victim, 0);
}

// A walk over a large table takes longer than the end of the process may be kept waiting.
template <class Action>
void forEachUnpinned(Action action) {
    constexpr u64 bucketsPerLook = u64{1} << 16;
    for (u64 i = 0; i < nHashTables; ++i) {
        if (i % bucketsPerLook == 0 && shutDownBegun) return;
        for (HashEntry& entry : hashTable[i].entries) {
            if (entry.lowerDepth != pinnedDepth) action(entry);
        }
    }
}

// An entry that stays what it is is not written.
void age(HashEntry& entry) {
    constexpr u8 marks = HashEntry::usedFlag | HashEntry::wasUsedFlag;
    if (!(entry.flags & marks)) return;
    const u8 wasUsed = entry.flags & HashEntry::usedFlag ? HashEntry::wasUsedFlag : u8{0};
    const u8 aged = static_cast<u8>((entry.flags & ~marks) | wasUsed);
    if (entry.flags != aged) entry.flags = aged;
}

HashEntry& firstEntryOf(const Position& position) {
    return hashTable[position.state->hashLow & hashMask].entries[0];
}

}  // namespace

u64 floorPowerOfTwo(i64 x) {
    return x < 2 ? 1 : std::bit_floor(static_cast<u64>(x));
}

u64 bucketsForMegabytes(i64 megabytes) {
    constexpr i64 mostMegabytes = 1 << 20;
    return floorPowerOfTwo(std::min(megabytes, mostMegabytes) * 1048576 /
                           static_cast<i64>(sizeof(HashBucket)));
}

void setHashBuckets(i64 buckets) {
    nHashTables = floorPowerOfTwo(buckets);
    hashMask = nHashTables - 1;
}

namespace {

bool openTable() {
    void* const memory = openSharedPointer();
    if (!memory) return false;
    // More buckets than the table has were asked for: there is no such table.
    if (sharedPointerSize(sharedTableId) / sizeof(HashBucket) < nHashTables) {
        clearSharedPointer(sharedTableId);
        return false;
    }
    hashTable = static_cast<HashBucket*>(memory);
    hashReadiness = HashReadiness::none;  // others write to it too
    clearHashTable();
    return true;
}

// Clears a new table. The system gives each page when it is first written: now, and not on the clock of the
// first search that gets there.
void writeAll() {
    forEachUnpinned([](HashEntry& entry) { entry.flags = 0, entry.check = 0; });
}

// Takes the first number that nobody has, not even in the moment between the look and the creation. The
// tables of other engines are not opened for it: there may be no room for them here.
void createTable() {
    SharedMemory::removeStale(firstTableId, idsInUse);
    constexpr u64 tooManyBuckets = u64{1} << 32;
    const u64 size = std::min(nHashTables, tooManyBuckets) * sizeof(HashBucket);
    for (sharedTableId = firstTableId;; ++sharedTableId) {
        if (isSharedPointerOpen(sharedTableId)) continue;
        if (void* const memory = createSharedPointer(size)) {
            hashTable = static_cast<HashBucket*>(memory);
            hashReadiness = HashReadiness::cleared;
            writeAll();
            return;
        }
    }
}

}  // namespace

bool createHashTable() {
    hashUsed = 0;
    const bool opening = sharedTableId != -1;
    try {
        if (opening) return openTable();
        createTable();
        return true;
    } catch (const std::string& text) {
        throw std::string("Error in createHashTable while ") + (opening ? "opening" : "creating") +
            " shared memory:\n" + text;
    }
}

void releaseHashTable() {
    if (!hashTable) return;
    hashTable = nullptr;
    clearSharedPointer(sharedTableId);
    sharedTableId = -1;
}

void clearHashTable() {
    forEachUnpinned([](HashEntry& entry) {
        age(entry);
        if (entry.check) entry.check = 0;
    });
}

void ageHashTable() {
    forEachUnpinned(age);
}

u32 hashFull() {
    return static_cast<u32>(static_cast<double>(hashUsed) / (2.0 * static_cast<double>(nHashTables)) *
                            1000.0);
}

bool probeHash(const StateRecord& state, HashEntry& found) {
    for (HashEntry& entry : hashTable[state.hashLow & hashMask].entries) {
        if (entry.check != state.hashHigh) continue;
        if (isLocked(entry)) return false;
        markUsed(entry);
        found = entry;
        return true;
    }
    return false;
}

Move readPvMove(const StateRecord& state) {
    for (HashEntry& entry : hashTable[state.hashLow & hashMask].entries) {
        if (entry.check != state.hashHigh) continue;
        if (!isLocked(entry)) markUsed(entry);
        return entry.lowerMove;
    }
    return nullMove;
}

void storeLowerBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility) {
    storeBound<LowerBound, UpperBound>(ply, hashHigh, hashLow, score, depth, move, fiftyMoves, mobility);
}

void storeUpperBound(int ply, u32 hashHigh, u32 hashLow, i32 score, i32 depth, Move move, int fiftyMoves,
                     i32 mobility) {
    storeBound<UpperBound, LowerBound>(ply, hashHigh, hashLow, score, depth, move, fiftyMoves, mobility);
}

void pinPosition(const Position& position, i32 value) {
    const i32 score = position.sideToMove == White ? value : -value;
    HashEntry& entry = firstEntryOf(position);
    // The mark that the entry got in the last search stays with it, whether the table has been aged since or
    // is yet to be.
    const bool marked = entry.flags & HashEntry::usedFlag ||
                        (hashReadiness != HashReadiness::none && entry.flags & HashEntry::wasUsedFlag);
    entry.flags = static_cast<u8>(entry.fiftyMargin() * 8 + (marked ? HashEntry::usedFlag : 0));
    entry.check = position.state->hashHigh;
    entry.lowerScore = entry.upperScore = static_cast<i16>(std::clamp(score, -mateScore, mateScore));
    entry.lowerDepth = entry.upperDepth = pinnedDepth;
    entry.lowerMove = nullMove;
}

void unpinPosition(const Position& position) {
    HashEntry& entry = firstEntryOf(position);
    entry.flags = static_cast<u8>(entry.fiftyMargin() * 8);
    entry.check = 0;
    entry.lowerDepth = 0;
    entry.upperDepth = 0;
}

}  // namespace valku
