#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "benchmark_engine.h"
#include "chess/fen.h"
#include "chess/tables.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "distributed/split_search.h"
#include "eval/eval_tables.h"
#include "platform/fault.h"
#include "platform/text_sink.h"
#include "protocol/parameters.h"
#include "protocol/protocol_mode.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/upward_calls.h"
#include "thinking/search_observer.h"

// The engine's start-up with its tables at their default sizes, but with nobody to talk to.

namespace valku {

namespace {

class SilentSink final : public TextSink {
  public:
    void send(std::string_view) override {}
};

SilentSink sink;
SearchObserver observer;

void startEngine() {
    textSink = &sink;
    settleProtocol(protocolUci);
    initChessTables();
    initEvalTables();
    linkHistoryTables();
    initParameters();
    searchObserver = &observer;
    splitSearchPort = splitSearch;
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
    } catch (const valku::Fault& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return 1;
    }
    try {
        benchmark::RunSpecifiedBenchmarks();
    } catch (const valku::Fault& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
    }
    benchmark::Shutdown();
    valku::releaseHashTable();
}
