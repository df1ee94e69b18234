#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmark_engine.h"
#include "book/book_settings.h"
#include "chess/fen.h"
#include "chess/tables.h"
#include "distributed/process_lists.h"
#include "distributed/root_search_process.h"
#include "distributed/split_root_search.h"
#include "distributed/split_search.h"
#include "eval/eval_tables.h"
#include "protocol/parameters.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/output.h"
#include "search/process_state.h"
#include "search/search_ports.h"

// The engine's start-up with its tables at their default sizes, but with nobody to talk to.

namespace valku {

namespace {

class SilentSink final : public TextSink {
  public:
    void send(std::string_view) override {}
};

class SilentObserver final : public SearchObserver {
  public:
    void clockRead(i32, double, double) override {}
    void timeScheduled(double, double) override {}
    void rootMoveBegun(i32, Move, i32, const StateRecord&) override {}
    void mainLineFound(i32, i32, const Line&, bool) override {}
    void failedHigh(i32, i32) override {}
    void failedLow(i32, i32, const Line&) override {}
    void timeRanOut() override {}
    void moveChosen(Move) override {}
    void moveMade() override {}
    void bookMoveMade(Move, char) override {}
};

SilentSink sink;
SilentObserver observer;

void startEngine() {
    textSink = &sink;
    protocolMode = protocolUci;
    initChessTables();
    initEvalTables();
    linkHistoryTables();
    initBookWeights();
    initParameters();
    searchPorts = {
        .observer = &observer,
        .prepareSearches = prepareSearches,
        .prepareAhead = [] { rootSearchProcess->prepareAhead(); },
        .splitRootSearch = splitRootSearch,
        .splitSearch = splitSearch,
        .tryBookMove = [] { return false; },
    };
    rootSearchProcess = std::make_unique<RootSearchProcess>(false);
    enterProcess(*rootSearchProcess);
}

}  // namespace

void setPosition(const BenchmarkPosition& position) {
    if (!readFen(position.fen)) {
        std::fprintf(stderr, "bad benchmark position %s\n", position.name);
        std::abort();
    }
    copyPosition(searchPosition, gamePosition);
}

bool useHashBuckets(i64 buckets) {
    if (nHashTables == floorPowerOfTwo(buckets)) return false;
    releaseHashTable();
    setHashBuckets(buckets);
    return createHashTable();
}

}  // namespace valku

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    try {
        valku::startEngine();
    } catch (const std::string& text) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return 1;
    }
    try {
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::string& text) {
        std::fprintf(stderr, "%s\n", text.c_str());
    }
    benchmark::Shutdown();
    valku::releaseHashTable();
}
