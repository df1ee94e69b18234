#include <benchmark/benchmark.h>

#include "benchmark_engine.h"
#include "eval/pawn_table.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "thinking/main_line.h"
#include "thinking/thinking.h"
#include "thinking/time_management.h"

namespace valku {

namespace {

constexpr i32 searchDepth = 11;

// A whole search cycle, as `go depth` runs it, with empty tables. `nodes` counts one search.
void fullSearch(benchmark::State& state) {
    useHashBuckets(defaultHashBuckets);
    u64 nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        setPosition(state);
        clearHashTable();
        clearPawnTable();
        clearHistory();
        state.ResumeTiming();
        think(searchDepth, unlimitedSeconds);
        nodes += totalNodes;
    }
    state.counters["nodes"] = static_cast<double>(totalNodes);
    state.counters["nps"] = benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsRate);
}
BENCHMARK(fullSearch)->Apply(onAllPositions)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace valku
