#include <benchmark/benchmark.h>

#include "benchmark_engine.h"
#include "chess/position.h"
#include "eval/evaluate.h"
#include "search/search_job.h"

namespace valku {

namespace {

void evaluateWithPawnHit(benchmark::State& state) {
    setPosition(state);
    computeRootMobility();
    for (auto _ : state) benchmark::DoNotOptimize(evaluate());
}
BENCHMARK(evaluateWithPawnHit)->Apply(onAllPositions);

// Each round has a key that no entry holds, spread over the whole table: the price includes building the
// entry and the way to memory.
void evaluateWithPawnMiss(benchmark::State& state) {
    setPosition(state);
    computeRootMobility();
    constexpr u64 keyStep = 0x9E3779B97F4A7C15;
    for (auto _ : state) {
        searchPosition.state->pawnHash += keyStep;
        benchmark::DoNotOptimize(evaluate());
    }
}
BENCHMARK(evaluateWithPawnMiss)->Apply(onAllPositions);

// What a node pays before it can evaluate: the square-weighted mobility of both sides.
void mobilityOfBothSides(benchmark::State& state) {
    setPosition(state);
    for (auto _ : state) {
        computeRootMobility();
        benchmark::DoNotOptimize(mobilityBalance);
    }
}
BENCHMARK(mobilityOfBothSides)->Apply(onAllPositions);

}  // namespace

}  // namespace valku
