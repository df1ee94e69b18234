#include "tablemaker/huffman_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <queue>
#include <utility>

#include "tablebases/huffman_decoder.h"

namespace valku {

namespace {

// Code lengths without a limit.
std::vector<u32> unlimitedLengths(std::span<const u32> counts) {
    using Subtree = std::pair<u64, std::size_t>;  // how frequent it is, and its node
    std::priority_queue<Subtree, std::vector<Subtree>, std::greater<>> subtrees;
    std::vector<std::size_t> parents(counts.size());
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        if (counts[symbol] != 0) subtrees.emplace(counts[symbol], symbol);
    }
    const auto take = [&] {
        const Subtree rarest = subtrees.top();
        subtrees.pop();
        parents[rarest.second] = parents.size();
        return rarest.first;
    };
    if (subtrees.size() == 1) take();
    while (subtrees.size() > 1) {
        const u64 count = take() + take();
        subtrees.emplace(count, parents.size());
        parents.push_back(0);
    }
    // Parents come after their children; the last node is the root.
    std::vector<u32> depths(parents.size() + 1);
    for (std::size_t node = parents.size(); node-- > 0;) {
        if (parents[node] != 0) depths[node] = depths[parents[node]] + 1;
    }
    depths.resize(counts.size());
    return depths;
}

struct LengthRun {
    u32 value;
    u32 count;
};

// Symbols of the two codes that lengths are packed with: one for values, one for run lengths.
constexpr u32 packedSymbols = 64;
constexpr u32 repeated = 32;   // values from here on are followed by the length of a run
constexpr u32 plainRuns = 32;  // run lengths from here on are followed by extra bits
constexpr u32 shortestRun = 2;
constexpr u32 packedLengthLimit = 7;  // the lengths of these codes then fit in three bits

struct PackedRun {
    u32 value, run;
    u32 extra, extraBits;
};

PackedRun packRun(LengthRun lengths) {
    if (lengths.count < shortestRun) return {lengths.value, 0, 0, 0};
    const u32 rest = lengths.count - shortestRun;
    if (rest < plainRuns) return {lengths.value + repeated, rest, 0, 0};
    const u32 over = rest - (plainRuns - 1);
    const u32 extraBits = static_cast<u32>(std::bit_width(over)) - 1;
    return {lengths.value + repeated, plainRuns + extraBits, over - (1U << extraBits), extraBits};
}

void encodeFewLengths(BitWriter& bits, std::span<const u32> lengths) {
    const auto width = static_cast<u32>(std::bit_width(std::ranges::max(lengths)));
    constexpr std::size_t mostZeros = 15;
    bits.write(width, 5);
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        bits.write(lengths[i], width);
        if (lengths[i] != 0) continue;
        u32 zeros = 0;
        while (zeros < mostZeros && i + 1 < lengths.size() && lengths[i + 1] == 0) ++i, ++zeros;
        bits.write(zeros, 4);
    }
}

void encodeManyLengths(BitWriter& bits, std::span<const u32> lengths) {
    std::vector<PackedRun> runs;
    std::array<u32, packedSymbols> valueCounts{}, runCounts{};
    for (std::size_t i = 0; i < lengths.size();) {
        const u32 value = lengths[i];
        u32 count = 0;
        for (; i < lengths.size() && lengths[i] == value; ++i) ++count;
        runs.push_back(packRun({value, count}));
        ++valueCounts[runs.back().value];
        if (runs.back().value >= repeated) ++runCounts[runs.back().run];
    }
    std::vector<u32> valueLengths = codeLengths(valueCounts, packedLengthLimit);
    std::vector<u32> runLengths = codeLengths(runCounts, packedLengthLimit);
    std::vector<u32> both = valueLengths;
    both.insert(both.end(), runLengths.begin(), runLengths.end());
    encodeLengths(bits, both);
    const HuffmanEncoder values(std::move(valueLengths)), runCode(std::move(runLengths));
    for (const PackedRun& run : runs) {
        values.write(bits, run.value);
        if (run.value < repeated) continue;
        runCode.write(bits, run.run);
        bits.write(run.extra, run.extraBits);
    }
}

}  // namespace

std::vector<u32> codeLengths(std::span<const u32> counts, u32 limit) {
    std::vector<u32> flattened(counts.begin(), counts.end());
    for (;;) {
        std::vector<u32> lengths = unlimitedLengths(flattened);
        if (std::ranges::max(lengths) <= limit) return lengths;
        for (u32& count : flattened) count = count / 2 + count % 2;  // never to 0
    }
}

HuffmanEncoder::HuffmanEncoder(std::vector<u32> codeLengths) : lengths(std::move(codeLengths)) {
    codes = canonicalCodes(lengths).value();
    // The only symbol takes no bits.
    if (std::ranges::count(lengths, 0U) + 1 == std::ssize(lengths)) std::ranges::fill(lengths, 0U);
}

void encodeLengths(BitWriter& bits, std::span<const u32> lengths) {
    constexpr std::size_t fewLengths = 128;
    const bool none = std::ranges::max(lengths) == 0;
    bits.write(none ? 1 : 0, 1);
    if (none) return;
    if (lengths.size() <= fewLengths) {
        encodeFewLengths(bits, lengths);
    } else {
        encodeManyLengths(bits, lengths);
    }
}

}  // namespace valku
