#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "benchmark_engine.h"
#include "search/hash_table.h"

// The road to the hash table's memory. The table and the part of it that is visited are larger than most
// caches, the keys are random, and every benchmark comes in two kinds: buckets that lie in one cache line
// (argument 0), and buckets that lie in two (1).

namespace valku {

namespace {

struct Key {
    u32 low;
    u32 high;
};

constexpr i64 buckets = 1 << 23;  // 384 MiB
constexpr std::size_t keyCount = 1 << 22;

bool crossesCacheLine(u32 low) {
    constexpr u64 lineSize = 64;
    const u64 address = reinterpret_cast<u64>(&hashTable[low & hashMask]);
    return address / lineSize != (address + sizeof(HashBucket) - 1) / lineSize;
}

std::vector<Key> makeKeys(bool crossing, u32 seed) {
    std::mt19937 random(seed);
    std::vector<Key> keys;
    keys.reserve(keyCount);
    while (keys.size() < keyCount) {
        const Key key{static_cast<u32>(random()), static_cast<u32>(random()) | 1};
        if (crossesCacheLine(key.low) == crossing) keys.push_back(key);
    }
    return keys;
}

void store(const Key& key) {
    constexpr i32 depth = 20;
    storeLowerBound(1, key.high, key.low, 15, depth, nullMove, 0, 30);
}

bool probe(const Key& key, HashEntry& entry) {
    StateRecord record{};
    record.hashLow = key.low;
    record.hashHigh = key.high;
    return probeHash(record, entry);
}

// Keys of buckets of one kind: those that the table holds, and others.
struct Keys {
    std::vector<Key> present;
    std::vector<Key> absent;
};

void fillTable(bool crossing, Keys& keys) {
    std::vector<Key> stored = makeKeys(crossing, crossing ? 1 : 2);
    for (const Key& key : stored) store(key);
    HashEntry entry;
    for (const Key& key : stored) {
        // Some have pushed others out.
        if (probe(key, entry)) keys.present.push_back(key);
    }
    keys.absent = makeKeys(crossing, crossing ? 3 : 4);
}

const Keys& setUpKeys(benchmark::State& state) {
    static Keys keys[2];
    if (useHashBuckets(buckets)) {
        for (const bool crossing : {false, true}) {
            keys[crossing] = {};
            fillTable(crossing, keys[crossing]);
        }
    }
    const bool crossing = state.range(0) != 0;
    state.SetLabel(crossing ? "bucket in two cache lines" : "bucket in one cache line");
    return keys[crossing];
}

// The key of a probe hangs on what the hit before it has read, so a hit shows the whole way to memory. A miss
// hands nothing on: the processor runs ahead of it, and its time is that of many probes side by side.
void probeAll(benchmark::State& state, const std::vector<Key>& keys) {
    std::size_t next = 0;
    u64 hits = 0;
    HashEntry entry{};
    for (auto _ : state) {
        const bool hit = probe(keys[next], entry);
        hits += hit;
        next += hit ? 1 + entry.unused[0] : 1;
        if (next >= keys.size()) next = 0;
        benchmark::DoNotOptimize(next);
    }
    state.counters["hitsPerMille"] =
        1000.0 * static_cast<double>(hits) / static_cast<double>(state.iterations());
}

void hashProbeHit(benchmark::State& state) {
    probeAll(state, setUpKeys(state).present);
}
BENCHMARK(hashProbeHit)->Arg(0)->Arg(1);

void hashProbeMiss(benchmark::State& state) {
    probeAll(state, setUpKeys(state).absent);
}
BENCHMARK(hashProbeMiss)->Arg(0)->Arg(1);

// The probe a few keys behind its prefetch.
void hashProbeAfterPrefetch(benchmark::State& state) {
    const std::vector<Key>& keys = setUpKeys(state).present;
    constexpr std::size_t distance = 8;
    std::size_t next = 0;
    HashEntry entry{};
    for (auto _ : state) {
        prefetchHash(keys[next + distance].low);
        benchmark::DoNotOptimize(probe(keys[next], entry));
        if (++next + distance >= keys.size()) next = 0;
    }
}
BENCHMARK(hashProbeAfterPrefetch)->Arg(0)->Arg(1);

// A position comes back with another score: its own entry is written.
void hashStore(benchmark::State& state) {
    const std::vector<Key>& keys = setUpKeys(state).present;
    constexpr i32 depth = 20;
    std::size_t next = 0;
    i32 score = 16;
    for (auto _ : state) {
        storeLowerBound(1, keys[next].high, keys[next].low, score, depth, nullMove, 0, 30);
        if (++next >= keys.size()) {
            next = 0;
            ++score;
        }
    }
}
BENCHMARK(hashStore)->Arg(0)->Arg(1);

}  // namespace

}  // namespace valku
