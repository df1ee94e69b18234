#include "search/hash_table.h"

#include <algorithm>
#include <atomic>

#include "platform/shut_down.h"
#include "search/stop_word.h"

namespace valku {

namespace {

constexpr int fiftyMarginOf(int fiftyMoves) {
    return fiftyMoves >= fiftyMoveCaution && fiftyMoves <= 99 ? 99 - fiftyMoves : 7;
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

// The lock of an entry, the only synchronization between processes. The fences bind only the compiler: they
// keep it from moving writes out of the locked section and from dropping a lock that nobody in this process
// reads. Between processes nothing is ordered; two writers may pass the test at once, and the later write
// wins field by field. A process that dies with the lock set leaves one entry of millions unusable.
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

// A walk over a large table takes longer than the end of the process may wait.
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

// Writes only entries that change.
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

void zeroHashTable() {
    forEachUnpinned([](HashEntry& entry) { entry.flags = 0, entry.check = 0; });
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
    // The entry keeps its used mark of the last search, whether the table has been aged since or not.
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
