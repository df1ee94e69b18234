#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "benchmark_engine.h"
#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/make_move.h"
#include "chess/move_generation.h"
#include "tools/learn_matrix.h"

namespace valku {

namespace {

// A folder with a learn file: the positions of random games, from the opening to the bare ending.
struct LearnFiles {
    std::filesystem::path folder;
    i64 positions = 0;

    LearnFiles();
    ~LearnFiles() {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }
    LearnFiles(const LearnFiles&) = delete;
    LearnFiles& operator=(const LearnFiles&) = delete;
};

// False if the game is over or has run off its stack.
bool playRandomMove(std::mt19937& random) {
    MoveList list;
    generateAllMoves(list);
    while (list.count > 0 && stackedMoves(searchPosition) < stateStackSize - 1) {
        const auto choice = random() % static_cast<u32>(list.count);
        makeMove(list.moves[choice]);
        if (!leftKingInCheck()) return true;
        unmakeMove();
        list.moves[choice] = list.moves[--list.count];
    }
    return false;
}

LearnFiles::LearnFiles() {
    const std::string name = "valku_benchmark_" + std::to_string(std::random_device{}());
    folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(folder);
    std::ofstream file(folder / "learn", std::ios::binary);
    readFen(startPositionFen);
    std::mt19937 random(1);
    for (int game = 0; game < 500; ++game) {
        copyPosition(searchPosition, gamePosition);
        for (; playRandomMove(random); ++positions)
            file << writeFen(searchPosition) << '\n' << static_cast<int>(random() % 301) - 150 << '\n';
    }
}

void learnFile2Matrix(benchmark::State& state) {
    static const LearnFiles files;
    const std::string learn = (files.folder / "learn").string();
    const std::string matrix = (files.folder / "matrix").string();
    for (auto _ : state) learnFileToMatrix(" " + learn + " " + matrix);
    if (!std::filesystem::exists(matrix + ".eg")) state.SkipWithError("nothing was written");
    countOperations(state, static_cast<double>(files.positions * static_cast<i64>(state.iterations())));
}
BENCHMARK(learnFile2Matrix)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace valku
