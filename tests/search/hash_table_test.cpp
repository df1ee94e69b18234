#include "search/hash_table.h"

#include <string>

#include "chess/chess_test.h"
#include "search/shared_pointer_table.h"
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
    static HashEntry entryOf(u32 key) {
        HashEntry entry{};
        EXPECT_TRUE(probeHash(keyOf(key), entry)) << key;
        return entry;
    }
};

TEST(HashSize, LargestPowerOfTwo) {
    const struct {
        i64 x;
        u64 floor;
    } cases[] = {{-5, 1},
                 {0, 1},
                 {1, 1},
                 {2, 2},
                 {3, 2},
                 {4, 4},
                 {3000000, 2097152},
                 {(i64{1} << 40) + 1, u64{1} << 40}};
    for (const auto& c : cases) EXPECT_EQ(floorPowerOfTwo(c.x), c.floor) << c.x;
    EXPECT_EQ(bucketsForMegabytes(1), 16384u);
    EXPECT_EQ(bucketsForMegabytes(2), 32768u);
    EXPECT_EQ(bucketsForMegabytes(96), 2097152u);
    EXPECT_EQ(bucketsForMegabytes(2048), 33554432u);
    EXPECT_EQ(bucketsForMegabytes(0), 1u);
    EXPECT_EQ(bucketsForMegabytes(-3), 1u);
    setHashBuckets(1000);
    EXPECT_EQ(nHashTables, 512u);
    EXPECT_EQ(hashMask, 511u);
}

TEST_F(HashTable, AFreshEntryHasOneBound) {
    EXPECT_FALSE(holds(7));
    storeLowerBound(3, 7, bucket, 55, 12, 0x1434, 0, 300);
    const HashEntry entry = entryOf(7);
    EXPECT_EQ(entry.lowerScore, 55);
    EXPECT_EQ(entry.lowerDepth, 12);
    EXPECT_EQ(entry.lowerMove, 0x1434u);
    EXPECT_EQ(entry.upperScore, 32767);
    EXPECT_EQ(entry.upperDepth, 0);
    EXPECT_EQ(entry.upperMove, 0u);
    EXPECT_EQ(entry.mobility, 300 % 256);
    EXPECT_EQ(entry.flags, 0x3A);
    EXPECT_EQ(entry.lock, 0);
    upper(8, -20, 9);
    EXPECT_EQ(entryOf(8).lowerScore, -32768);
    EXPECT_EQ(entryOf(8).lowerDepth, 0);
    EXPECT_EQ(entryOf(8).lowerMove, 0u);
    EXPECT_FALSE(holds(9));
}

// A store on top of a bound of depth 8 and score 20 or, mirrored, -20: which of the two is left?
TEST_F(HashTable, TheBetterBoundOfAPositionStays) {
    const struct {
        i32 score, depth;
        bool replaces;
    } cases[] = {{20, 8, false},  {21, 8, true},   {19, 8, false},
                 {500, 7, false}, {-500, 9, true}, {20, 9, true}};
    for (const auto& c : cases) {
        lower(7, 20, 8, 0x11);
        lower(7, c.score, c.depth, 0x22);
        EXPECT_EQ(entryOf(7).lowerScore, c.replaces ? c.score : 20);
        EXPECT_EQ(entryOf(7).lowerDepth, c.replaces ? c.depth : 8);
        EXPECT_EQ(entryOf(7).lowerMove, c.replaces ? 0x22u : 0x11u);
        upper(7, -20, 8, 0x11);
        upper(7, -c.score, c.depth, 0);
        EXPECT_EQ(entryOf(7).upperScore, c.replaces ? -c.score : -20);
        EXPECT_EQ(entryOf(7).upperDepth, c.replaces ? c.depth : 8);
        EXPECT_EQ(entryOf(7).upperMove, c.replaces ? 0u : 0x11u);
        // Each bound has been replaced on its own.
        EXPECT_EQ(entryOf(7).lowerScore, c.replaces ? c.score : 20);
        releaseHashTable();
        ASSERT_TRUE(createHashTable());
    }
}

TEST_F(HashTable, OldEntriesGoFirstAndThenTheShallower) {
    lower(1, 0, 8);
    lower(2, 0, 4);
    upper(2, 0, 12);  // judged by its deeper bound
    lower(3, 0, 7);   // shallower than both: dropped
    EXPECT_FALSE(holds(3));
    upper(3, 0, 8, 0);  // not shallower than the first
    EXPECT_TRUE(holds(3));
    EXPECT_FALSE(holds(1));
    EXPECT_TRUE(holds(2));
    EXPECT_EQ(entryOf(3).lowerScore, noLowerScore);  // nothing of the old owner is left
    EXPECT_EQ(entryOf(3).lowerDepth, 0);
    lower(4, 0, 0);
    EXPECT_FALSE(holds(4));

    ageHashTable();
    holds(3);  // a probe marks the first entry as of this search
    lower(5, 0, 0);
    EXPECT_TRUE(holds(3));
    EXPECT_FALSE(holds(2));  // the old one had to go, whatever its depth
    EXPECT_TRUE(holds(5));
    ageHashTable();
    lower(6, 0, 0);  // both are old: the first
    EXPECT_FALSE(holds(3));
    EXPECT_TRUE(holds(5));
}

TEST_F(HashTable, DepthZeroTakesTheRoomOfDepthZero) {
    lower(1, 0, 0);
    upper(1, 10, 0);
    lower(2, 0, 4);
    lower(3, 0, 0);
    EXPECT_FALSE(holds(1));
    EXPECT_TRUE(holds(2));
    EXPECT_TRUE(holds(3));
}

TEST_F(HashTable, MateScoresCountFromTheNodeAndHoldAtAnyDepth) {
    lower(1, 29990, 4, 0x11, 10);
    EXPECT_EQ(entryOf(1).lowerDepth, mateDepth);
    EXPECT_EQ(scoreFromTable(entryOf(1).lowerScore, 20), 29980);
    upper(1, -29990, 4, 0x11, 10);
    EXPECT_EQ(entryOf(1).upperDepth, mateDepth);
    EXPECT_EQ(scoreFromTable(entryOf(1).upperScore, 20), -29980);
    // Being mated is no lower bound for any depth, nor mating an upper one.
    lower(2, -29990, 4, 0x11, 10);
    EXPECT_EQ(entryOf(2).lowerDepth, 4);
    EXPECT_EQ(scoreFromTable(entryOf(2).lowerScore, 10), -29990);
    upper(2, 29990, 4, 0x11, 10);
    EXPECT_EQ(entryOf(2).upperDepth, 4);
    EXPECT_EQ(scoreFromTable(entryOf(2).upperScore, 12), 29988);
    for (const i32 score : {-28999, -1, 0, 1, 28999}) EXPECT_EQ(scoreFromTable(score, 30), score);
}

TEST_F(HashTable, TheFiftyMarginNarrowsTowardsTheDraw) {
    const struct { int fiftyMoves, margin; } cases[] = {{0, 7}, {92, 7}, {93, 6}, {96, 3}, {99, 0}, {100, 7}};
    i32 depth = 1;
    for (const auto& c : cases) {
        storeLowerBound(1, 7, bucket, 0, depth++, 0, c.fiftyMoves, 0);
        EXPECT_EQ(entryOf(7).fiftyMargin(), c.margin) << c.fiftyMoves;
        EXPECT_TRUE(entryOf(7).flags & HashEntry::usedFlag);
    }
}

TEST_F(HashTable, NobodyWaitsForALock) {
    lower(7, 20, 8, 0x11);
    ageHashTable();
    hashUsed = 0;
    HashEntry& entry = hashTable[bucket].entries[0];
    entry.lock = 1;
    EXPECT_FALSE(holds(7));
    EXPECT_EQ(readPvMove(keyOf(7)), 0x11u);
    EXPECT_EQ(hashUsed, 0u);
    lower(7, 90, 20, 0x22);
    EXPECT_EQ(entry.lowerScore, 20);
    entry.lock = 0;
    EXPECT_EQ(entryOf(7).lowerMove, 0x11u);
    EXPECT_EQ(readPvMove(keyOf(99)), nullMove);
}

TEST_F(HashTable, UsedEntriesAreCountedOnce) {
    hashUsed = 0;
    for (u32 i = 0; i < 8; ++i) storeLowerBound(1, 100 + i, i, 0, 4, 0, 0, 0);
    lower(105, 1, 5);
    EXPECT_EQ(hashUsed, 8u);
    EXPECT_EQ(hashFull(), 8u * 1000 / 32);
    ageHashTable();
    hashUsed = 0;
    EXPECT_TRUE(holds(105));  // old bounds still count
    EXPECT_TRUE(holds(105));
    readPvMove(keyOf(104, 4));
    EXPECT_EQ(hashUsed, 2u);
    EXPECT_EQ(entryOf(105).lowerScore, 1);
    clearHashTable();
    EXPECT_FALSE(holds(105));
}

TEST_F(HashTable, NothingIsStoredAfterAStop) {
    setStop(stopStandardProcess);
    lower(7, 20, 8);
    upper(7, 20, 8);
    clearStop(stopStandardProcess);
    EXPECT_FALSE(holds(7));
}

TEST_F(HashTable, PinnedPositionsYieldToAMateOnly) {
    setPosition("4k3/8/8/8/8/8/8/R3K3 b Q - 0 1");
    const StateRecord& state = *gamePosition.state;
    HashEntry entry;
    storeLowerBound(1, state.hashHigh, state.hashLow, 5, 40, 0x11, 0, 0);
    pinPosition(gamePosition, 120);  // from White's view
    clearHashTable();
    ageHashTable();
    ASSERT_TRUE(probeHash(state, entry));
    EXPECT_EQ(entry.lowerScore, -120);
    EXPECT_EQ(entry.upperScore, -120);
    EXPECT_EQ(entry.lowerDepth, pinnedDepth);
    EXPECT_EQ(entry.upperDepth, pinnedDepth);
    EXPECT_EQ(entry.lowerMove, nullMove);

    storeLowerBound(1, state.hashHigh, state.hashLow, 500, 200, 0x22, 0, 0);
    storeUpperBound(1, state.hashHigh, state.hashLow, -500, 200, 0x22, 0, 0);
    ASSERT_TRUE(probeHash(state, entry));
    EXPECT_EQ(entry.lowerScore, -120);
    EXPECT_EQ(entry.upperScore, -120);
    storeLowerBound(1, state.hashHigh, state.hashLow, 29950, 1, 0x22, 0, 0);
    ASSERT_TRUE(probeHash(state, entry));
    EXPECT_EQ(entry.lowerScore, 29951);
    EXPECT_EQ(entry.lowerDepth, mateDepth);

    pinPosition(gamePosition, -7);
    unpinPosition(gamePosition);
    EXPECT_FALSE(probeHash(state, entry));
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
    EXPECT_THROW(createSharedPointer(48), std::string);
    EXPECT_THROW(clearSharedPointer(id + 1), std::string);
    sharedTableId = id + 999;
    EXPECT_FALSE(createHashTable());  // there is no such table to join
    EXPECT_THROW(createSharedPointer(u64{1} << 32), std::string);
    sharedTableId = id;
    ASSERT_TRUE(createHashTable());
    clearSharedPointer(id);
}

TEST_F(HashTable, TwoTablesHaveTwoNames) {
    const i32 first = sharedTableId;
    sharedTableId = -1;
    ASSERT_TRUE(createHashTable());
    EXPECT_GT(sharedTableId, first);
    releaseHashTable();
    sharedTableId = first;
    ASSERT_TRUE(createHashTable());
    clearSharedPointer(first);
}

}  // namespace
}  // namespace valku
