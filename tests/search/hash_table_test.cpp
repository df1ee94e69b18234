#include "search/hash_table.h"

#include "platform/fault.h"
#include "search/search_test.h"
#include "search/stop_word.h"

namespace valku {
namespace {

constexpr u32 bucket = 5;

StateRecord keyOf(u32 hashHigh, u32 hashLow = bucket) {
    StateRecord state{};
    state.hashLow = hashLow;
    state.hashHigh = hashHigh;
    return state;
}

class HashTable : public ::testing::Test {
  protected:
    void SetUp() override {
        setHashBuckets(16);
        ASSERT_TRUE(createHashTable());
    }
    void TearDown() override {
        clearAllStops();
        releaseHashTable();
    }

    static void lower(u32 key, i32 score, i32 depth, Move move = 0x1234, int ply = 1) {
        storeLowerBound(ply, key, bucket, score, depth, move, 0, 40);
    }
    static void upper(u32 key, i32 score, i32 depth, Move move = 0x1234, int ply = 1) {
        storeUpperBound(ply, key, bucket, score, depth, move, 0, 40);
    }
    static bool holds(u32 key) {
        HashEntry entry;
        return probeHash(keyOf(key), entry);
    }
    static HashEntry entryOf(const StateRecord& state) {
        HashEntry entry{};
        EXPECT_TRUE(probeHash(state, entry)) << state.hashHigh;
        return entry;
    }
    static HashEntry entryOf(u32 key) { return entryOf(keyOf(key)); }
};

TEST_F(HashTable, NothingIsStoredAfterAStop) {
    setStop(stopStandardProcess);
    lower(9, 20, 8);
    upper(9, 20, 8);
    clearStop(stopStandardProcess);
    EXPECT_FALSE(holds(9));
}

TEST_F(HashTable, MateScoresCountFromTheNodeAndHoldAtAnyDepth) {
    // Being mated is no lower bound for any depth, nor mating an upper one.
    for (const i32 side : {1, -1}) {
        clearHashTable();
        lower(1, side * 29990, 4, 0x11, 10);
        upper(2, side * 29990, 4, 0x11, 10);
        EXPECT_EQ(entryOf(1).lowerDepth, side > 0 ? mateDepth : 4);
        EXPECT_EQ(entryOf(2).upperDepth, side < 0 ? mateDepth : 4);
        EXPECT_EQ(scoreFromTable(entryOf(1).lowerScore, 20), side * 29980);
        EXPECT_EQ(scoreFromTable(entryOf(2).upperScore, 12), side * 29988);
        for (const i32 score : {0, 1, 28999}) EXPECT_EQ(scoreFromTable(side * score, 30), side * score);
    }
}

TEST_F(HashTable, NoScoreHoldsNearerToTheFiftyMoveDraw) {
    const int cases[][2] = {{0, 92}, {92, 92}, {93, 93}, {96, 96}, {99, 99}, {100, 92}};
    i32 depth = 1;
    for (const auto& [fiftyMoves, last] : cases) {
        storeLowerBound(1, 7, bucket, 0, depth++, 0, fiftyMoves, 0);
        for (int now = 0; now < 100; ++now) EXPECT_EQ(entryOf(7).holdsAt(now), now <= last) << now;
    }
}

TEST_F(HashTable, UsedEntriesAreCountedOnceAndNobodyWaitsForALock) {
    hashUsed = 0;
    for (u32 i = 0; i < 8; ++i) storeLowerBound(1, 100 + i, i, 0, 4, 0, 0, 0);
    lower(105, 1, 5, 0x11);
    EXPECT_EQ(hashUsed, 8u);
    EXPECT_EQ(hashFull(), 8u * 1000 / 32);
    ageHashTable();
    hashUsed = 0;
    HashEntry& entry = hashTable[bucket].entries[0];
    entry.lock = 1;
    EXPECT_FALSE(holds(105));
    EXPECT_EQ(readPvMove(keyOf(105)), 0x11u);
    EXPECT_EQ(hashUsed, 0u);
    lower(105, 90, 20, 0x22);
    entry.lock = 0;
    EXPECT_EQ(entryOf(105).lowerScore, 1);  // old bounds still count
    EXPECT_TRUE(holds(105));
    readPvMove(keyOf(104, 4));
    EXPECT_EQ(hashUsed, 2u);
    EXPECT_EQ(readPvMove(keyOf(99)), nullMove);
}

TEST_F(HashTable, PinnedPositionsYieldToAMateOnly) {
    setPosition("4k3/8/8/8/8/8/8/R3K3 b Q - 0 1");
    const StateRecord& state = *gamePosition.state;
    const auto store = [&](i32 score, i32 depth) {
        storeLowerBound(1, state.hashHigh, state.hashLow, score, depth, 0x22, 0, 0);
        storeUpperBound(1, state.hashHigh, state.hashLow, -score, depth, 0x22, 0, 0);
    };
    store(5, 40);
    pinPosition(gamePosition, 120);  // from White's view
    clearHashTable();
    ageHashTable();
    store(500, 200);
    EXPECT_EQ(entryOf(state).lowerScore, -120);
    EXPECT_EQ(entryOf(state).upperScore, -120);
    EXPECT_EQ(entryOf(state).lowerMove, nullMove);
    storeLowerBound(1, state.hashHigh, state.hashLow, 29950, 1, 0x22, 0, 0);
    EXPECT_EQ(entryOf(state).lowerScore, 29951);
    EXPECT_EQ(entryOf(state).lowerDepth, mateDepth);
    pinPosition(gamePosition, -7);
    unpinPosition(gamePosition);
    HashEntry entry;
    EXPECT_FALSE(probeHash(state, entry));
}

// The mark of the last search is what keeps a pinned entry from the next store to its bucket. It counts
// whether the table has been aged ahead or not, until that next search.
TEST_F(HashTable, PinnedPositionsKeepTheMarkOfTheLastSearch) {
    setPosition("4k3/8/8/8/8/8/8/R3K3 b Q - 0 1");
    const StateRecord& state = *gamePosition.state;
    HashEntry& entry = hashTable[state.hashLow & hashMask].entries[0];
    const auto isMarkedWhenPinned = [&](HashReadiness readiness, int walks) {
        clearHashTable();
        storeLowerBound(1, state.hashHigh, state.hashLow, 5, 40, 0x22, 0, 0);
        hashReadiness = readiness;
        for (int i = 0; i < walks; ++i) ageHashTable();
        pinPosition(gamePosition, 120);
        EXPECT_EQ(entry.fiftyMargin(), 7);
        const int flags = entry.flags;
        unpinPosition(gamePosition);
        EXPECT_EQ(entry.flags, flags & ~HashEntry::usedFlag);
        return (flags & HashEntry::usedFlag) != 0;
    };
    EXPECT_TRUE(isMarkedWhenPinned(HashReadiness::none, 0));
    EXPECT_TRUE(isMarkedWhenPinned(HashReadiness::aged, 1));
    EXPECT_FALSE(isMarkedWhenPinned(HashReadiness::aged, 2));
    EXPECT_FALSE(isMarkedWhenPinned(HashReadiness::none, 1));
}

// A second opening of the table gives the same memory, cleared, and has to be given back as well.
TEST_F(HashTable, OpenedBlocksAreCounted) {
    lower(7, 20, 8);
    const HashBucket* const created = hashTable;
    const i32 id = sharedTableId;
    EXPECT_GE(id, 1234000);
    ASSERT_TRUE(createHashTable());
    EXPECT_EQ(hashTable, created);
    EXPECT_EQ(sharedTableId, id);
    EXPECT_FALSE(holds(7));
    clearSharedPointer(id);
    lower(7, 20, 8);
    EXPECT_TRUE(holds(7));
    EXPECT_THROW(createSharedPointer(48), Fault);
    EXPECT_THROW(clearSharedPointer(id + 1), Fault);
    sharedTableId = id + 999;
    EXPECT_FALSE(createHashTable());  // there is no such table to join
    EXPECT_THROW(createSharedPointer(u64{1} << 32), Fault);
    sharedTableId = -1;
    ASSERT_TRUE(createHashTable());
    EXPECT_GT(sharedTableId, id);  // two tables have two names
    releaseHashTable();
    sharedTableId = id;
    ASSERT_TRUE(createHashTable());
    clearSharedPointer(id);
}

}  // namespace
}  // namespace valku
