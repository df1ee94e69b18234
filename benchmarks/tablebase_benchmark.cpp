#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "chess/fen.h"
#include "search/upward_calls.h"
#include "tablebases/material_classes.h"
#include "tablebases/probe.h"
#include "tablebases/registration.h"

// A probe whose block is in the cache: the lookup of the class, the numbering and the walk to the byte. The
// tables are files of zeros, which take no room on the disk.

namespace valku {

namespace {

struct ProbedPosition {
    const char* name;  // of the class
    const char* fen;
};

constexpr ProbedPosition positions[] = {
    {"krk", "8/8/3k4/8/8/2R5/3K4/8 w - - 0 1"},
    {"krkp", "8/8/3k4/3p4/8/2R5/3K4/8 b - - 0 1"},
    {"kqqpk", "8/8/3k4/5Q2/1P6/2Q5/3K4/8 b - - 0 1"},
    {"kbnpkp", "8/8/3k4/3p4/1PB2N2/8/3K4/8 w - - 0 1"},
};

void probe(benchmark::State& state) {
    const ProbedPosition& position = positions[state.range(0)];
    state.SetLabel(position.name);
    const std::filesystem::path home = std::filesystem::temp_directory_path() / "valku_benchmark_tables";
    std::filesystem::create_directories(home);
    initTablebases(home);
    const TbClass& tbClass = classTable[classByName(position.name)];
    for (const int side : {0, 1}) {
        for (std::size_t part = 0; part < tbClass.files[side].size(); ++part) {
            std::string name = tbClass.name;
            if (tbClass.has(tbMultiPart)) name += "." + std::string(1, "0123456789abcdefgh"[part]);
            name += side == 0 ? ".nbw" : ".nbb";
            std::ofstream(home / name).close();
            const bool whole = tbClass.has(tbMultiPart);
            std::filesystem::resize_file(home / name, whole ? tbPartBytes : tbClass.positions[side]);
        }
    }
    tbStartUp(home);
    i32 score = 0;
    if (!readFen(position.fen) || probeTablebases(0, &score, gamePosition) == 0)
        state.SkipWithError("no value");
    for (auto _ : state) benchmark::DoNotOptimize(probeTablebases(0, &score, gamePosition));
    forgetTablebases();
    largestTbMen = 0;
    std::filesystem::remove_all(home);
}
BENCHMARK(probe)->Name("tablebases/probe")->DenseRange(0, std::size(positions) - 1);

}  // namespace

}  // namespace valku
