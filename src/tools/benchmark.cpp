#include "tools/benchmark.h"

#include <algorithm>
#include <fstream>
#include <limits>

#include "platform/clock.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/shut_down.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/game.h"
#include "protocol/protocol_mode.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"
#include "tools/benchmark_positions.h"
#include "tools/file_line.h"

namespace valku {

namespace {

double speed(u64 nodes, double seconds) {
    constexpr double leastSeconds = 1e-6;
    return static_cast<double>(nodes) / std::max(seconds, leastSeconds);
}

i32 depthWithOffset(i64 depth, i64 offset) {
    constexpr i64 least = std::numeric_limits<i32>::min();
    constexpr i64 most = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(depth + offset, least, most));
}

void requireConsole() {
    if (protocolMode != protocolConsole)
        throw Fault("Benchmark kann nur im Konsolen-Modus gestartet werden!");
}

// One run over many positions: totals at both ends, and no pondering between the positions.
class Run {
  public:
    Run() : easyBefore(easyMode) {
        exitAnalysis();
        easyMode = true;
        sendText("\nStarting benchmark...\n");
        totalNodes = 0;
        totalTbProbes = 0;
        totalTbHits = 0;
        began = steadySeconds();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void finish() const {
        const double seconds = steadySeconds() - began;
        sendText("Knoten gesamt: " + std::to_string(totalNodes) + "\n");
        sendText(formatText("Zeit gesamt: %.3f\n", seconds));
        sendText(formatText("KPS: %.0f\n", speed(totalNodes, seconds)));
        finishThinking();  // the last cycle must not take the old setting for leave to ponder
        easyMode = easyBefore;
    }

  private:
    bool easyBefore;
    double began;
};

struct FileArguments {
    std::string name;
    i32 depthOffset;
    u64 minNodes;
};

FileArguments readFileArguments(std::string_view text) {
    const std::string name(takeWord(text));
    const i32 offset = readNumber(takeWord(text));
    const i64 minNodes = readLongNumber(takeWord(text));
    return {name, offset, static_cast<u64>(std::max<i64>(minNodes, 0))};
}

// A stop ends the search at once: nobody waits for its move.
void awaitEndOfPosition() {
    constexpr u32 turnMs = 20;
    while (!awaitSearchEnd(turnMs)) {
        if (commandStopped()) hastenSearchEnd();
    }
}

// Searches one position `depth` plies deep and tells the speed. Returns its nodes, 0 for a FEN that cannot be
// read; totalNodes is then the sum over all positions so far.
u64 benchPosition(const std::string& fen, i32 depth) {
    finishThinking();
    if (!setFen(fen)) {
        sendText("_benchMarkAlgorithmPositions(" + fen + "," + std::to_string(depth) +
                 "): an error occured while loading FEN\n");
        return 0;
    }
    sendText(formatText("Starting benchmarking position with depth %i...\n", depth));
    const u64 earlierNodes = totalNodes;
    totalNodes = 0;  // an answer from the book searches nothing
    nextSearch.maxDepth = depth;
    nextSearch.timeControlled = false;

    const double began = steadySeconds();
    expectSearchEnd();
    goCommand("");
    awaitEndOfPosition();
    const double seconds = steadySeconds() - began;

    const u64 nodes = totalNodes;
    sendText(formatText("KPS: %.0f\n", speed(nodes, seconds)));
    totalNodes += earlierNodes;
    return nodes;
}

void benchLines(std::istream& file, std::ostream& report, const FileArguments& arguments) {
    for (std::string line; !commandStopped() && readLine(file, line);) {
        const i32 depth = depthWithOffset(readNumber(line), arguments.depthOffset);
        if (line.empty() || depth == 0) break;
        const std::string fen = line.substr(line.find(':') + 1);
        const u64 nodes = benchPosition(fen, depth);
        if (nodes >= arguments.minNodes) report << fen << ": " << nodes << '\n' << std::flush;
    }
}

}  // namespace

void benchmark(std::string_view arguments) {
    requireConsole();
    const i32 offset = arguments.size() > 1 ? readNumber(arguments.substr(1)) : 0;
    const LongCommand longCommand;
    const Run run;
    for (const BenchmarkPosition& position : benchmarkPositions) {
        if (commandStopped()) break;
        benchPosition(position.fen, depthWithOffset(position.depth, offset));
    }
    if (shutDownBegun) return;
    run.finish();
}

bool benchFromFile(std::string_view text) {
    const FileArguments arguments = readFileArguments(text);
    sendText(arguments.name + " " + std::to_string(arguments.depthOffset) + " " +
             std::to_string(arguments.minNodes) + "\n");
    std::ifstream file(arguments.name);
    std::ofstream report;
    if (file) report.open(arguments.name + ".log");
    if (!file || !report) {
        sendText("Error: could not open " + arguments.name + (file ? ".log\n" : "\n"));
        return true;
    }
    requireConsole();
    const LongCommand longCommand;
    const Run run;
    benchLines(file, report, arguments);
    if (shutDownBegun) return false;
    run.finish();
    report.close();
    if (!report) sendText("Error: could not write " + arguments.name + ".log\n");
    return true;
}

}  // namespace valku
