#include <benchmark/benchmark.h>

#include "benchmark_engine.h"
#include "chess/exchange.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"

namespace valku {

namespace {

void makeUnmake(benchmark::State& state) {
    setPosition(state);
    MoveList list;
    generateAllMoves(list);
    for (auto _ : state) {
        for (i32 i = 0; i < list.count; ++i) {
            makeMove(list.moves[i]);
            unmakeMove();
        }
        benchmark::ClobberMemory();
    }
    countOperations(state, static_cast<double>(state.iterations()) * list.count);
}
BENCHMARK(makeUnmake)->Apply(onAllPositions);

// One list of moves per round; `moves` is its length.
template <class Generator>
void generate(benchmark::State& state, Generator generator) {
    setPosition(state);
    MoveList list;
    for (auto _ : state) {
        generator(list);
        benchmark::ClobberMemory();
    }
    state.counters["moves"] = list.count;
}

void captures(benchmark::State& state) {
    generate(state, [](MoveList& list) { benchmark::DoNotOptimize(generateCaptures(list, 0)); });
}
BENCHMARK(captures)->Apply(onAllPositions);

void quietMoves(benchmark::State& state) {
    generate(state, [](MoveList& list) { generateQuietMoves(list); });
}
BENCHMARK(quietMoves)->Apply(onAllPositions);

void allMoves(benchmark::State& state) {
    generate(state, [](MoveList& list) { generateAllMoves(list); });
}
BENCHMARK(allMoves)->Apply(onAllPositions);

// Every move of the position, as the ordering of a node asks for it.
template <class Question>
void askOfAllMoves(benchmark::State& state, Question question) {
    setPosition(state);
    MoveList list;
    generateAllMoves(list);
    for (auto _ : state) {
        for (i32 i = 0; i < list.count; ++i) benchmark::DoNotOptimize(question(list.moves[i]));
    }
    countOperations(state, static_cast<double>(state.iterations()) * list.count);
}

void staticExchangeOfAllMoves(benchmark::State& state) {
    askOfAllMoves(state, [](Move move) { return staticExchange(move); });
}
BENCHMARK(staticExchangeOfAllMoves)->Apply(onAllPositions);

void exchangeBoundOfAllMoves(benchmark::State& state) {
    askOfAllMoves(state, [](Move move) { return exchangeBound(move, 0); });
}
BENCHMARK(exchangeBoundOfAllMoves)->Apply(onAllPositions);

}  // namespace

}  // namespace valku
