#pragma once

#include <benchmark/benchmark.h>

#include <iterator>

#include "chess/types.h"

// The positions on which the benchmarks run, each taken by its index, and the state of the engine in which
// they run.

namespace valku {

struct BenchmarkPosition {
    const char* name;
    const char* fen;
};

constexpr BenchmarkPosition benchmarkPositions[] = {
    {"opening", "r1bqkbnr/pppp1ppp/2n5/1B2p3/4P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3"},
    {"closed", "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2Q1RK1 w - - 0 9"},
    {"open", "r4rk1/1bqnbppp/p2ppn2/1p6/3NPP2/1BN1B3/PPP1Q1PP/R4RK1 w - - 0 12"},
    {"attack", "r1b2rk1/pp1nqppp/2pbpn2/3p4/2PP4/1PN1PN2/PBQ1BPPP/R3K2R w KQ - 0 10"},
    {"endgame", "8/pp3pk1/2p3p1/3nP2p/3P1P2/1P3NKP/P5P1/8 w - - 0 35"},
};

// Makes a position of the table the current one, for the game and for the search.
void setPosition(const BenchmarkPosition& position);

// Gives the hash table that size. True if a new and empty one had to be made for it.
bool useHashBuckets(i64 buckets);

constexpr i64 defaultHashBuckets = 2097152;

// Registers a benchmark for every position.
inline void onAllPositions(benchmark::internal::Benchmark* family) {
    family->DenseRange(0, static_cast<int>(std::size(benchmarkPositions)) - 1);
}

// The start of a benchmark that takes the index of a position.
inline void setPosition(benchmark::State& state) {
    const BenchmarkPosition& position = benchmarkPositions[state.range(0)];
    state.SetLabel(position.name);
    setPosition(position);
}

// Reports a rate, and the time of one of `count` operations.
inline void countOperations(benchmark::State& state, double count) {
    using benchmark::Counter;
    state.counters["rate"] = Counter(count, Counter::kIsRate);
    state.counters["each"] = Counter(count, Counter::kIsRate | Counter::kInvert);
}

}  // namespace valku
