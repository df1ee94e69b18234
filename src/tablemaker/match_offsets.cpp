#include "tablemaker/match_offsets.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <mutex>
#include <utility>

#include "tablemaker/parallel_for.h"

namespace valku {

namespace {

constexpr std::size_t sampleBlocks = 16;
constexpr std::size_t scannedBlocks = 8;  // of the sample, for a scan of all distances
// Choices made by a scan of all distances; the later ones are made among the candidates of the last scan.
constexpr std::size_t fullScans = 2;
constexpr std::size_t candidateCount = 128;
constexpr double tokenCost = 9 * costUnit;  // estimate for a match of a distance that is not in use yet

// Costs of blocks under a model.
struct Fit {
    ParseModel model;
    SymbolCounts counts{};
    u64 cost = 0;
    std::vector<std::vector<u32>> costFrom;  // by block and place in it
};

TableBlocks sampleOf(const TableBlocks& blocks, std::size_t count) {
    const std::size_t step = std::max<std::size_t>(blocks.size() / count, 1);
    TableBlocks sample;
    for (std::size_t i = step / 2; i < blocks.size(); i += step) sample.push_back(blocks[i]);
    return sample;
}

// Parses the blocks `rounds` times, each time with the costs that follow from the counts of the last.
void improveFit(Fit& fit, const TableBlocks& blocks, int rounds, int threads) {
    fit.costFrom.resize(blocks.size());
    for (int round = 0; round < rounds; ++round) {
        std::mutex adding;
        fit.cost = 0;
        fit.counts.fill(0);
        parallelFor(threads, static_cast<u32>(blocks.size()), [&](u32 i) {
            const ParsedBlock parsed(blocks[i], fit.model);
            std::vector<u32>& costs = fit.costFrom[i];
            costs.resize(blocks[i].size() + 1);
            for (u32 place = 0; place < costs.size(); ++place) costs[place] = parsed.costFrom(place);
            const std::lock_guard lock(adding);
            fit.cost += parsed.costFrom(0);
            parsed.forTokens([&](Token token) { ++fit.counts[token.symbol]; });
        });
        fit.model = modelOfCounts(fit.model.offsets, fit.counts);
    }
}

// Where the bytes from `place` on stop repeating those `offset` before them.
u32 endOfRun(std::span<const u8> block, u32 place, u32 offset) {
    for (; place + 8 <= block.size(); place += 8) {
        u64 here, there;
        std::memcpy(&here, &block[place], 8);
        std::memcpy(&there, &block[place - offset], 8);
        if (here != there) return place + static_cast<u32>(std::countr_zero(here ^ there)) / 8;
    }
    while (place < block.size() && block[place] == block[place - offset]) ++place;
    return place;
}

// An estimate of what matches of a further distance would save in every step-th block.
double gainOf(u32 offset, const TableBlocks& blocks, const Fit& fit, std::size_t step) {
    double gain = 0;
    for (std::size_t i = 0; i < blocks.size(); i += step) {
        const std::span<const u8> block = blocks[i];
        const std::vector<u32>& costFrom = fit.costFrom[i];
        for (u32 place = offset; place < block.size(); ++place) {
            if (block[place] != block[place - offset]) continue;
            const u32 end = endOfRun(block, place, offset);
            gain += std::max(static_cast<double>(costFrom[place]) - costFrom[end] - tokenCost, 0.0);
            place = end;
        }
    }
    return gain;
}

}  // namespace

ParseModel chooseOffsets(const TableBlocks& blocks, int threads) {
    const TableBlocks sample = sampleOf(blocks, sampleBlocks);
    std::vector<u32> candidates;
    Fit fit{firstModel({}), {}, 0, {}};
    improveFit(fit, sample, 2, threads);
    while (fit.model.offsets.size() < matchOffsets) {
        std::size_t step = 1;
        if (fit.model.offsets.size() < fullScans) {
            step = std::max<std::size_t>(sample.size() / scannedBlocks, 1);
            candidates.clear();
            for (u32 offset = 1; offset < tableBlockSize; ++offset) {
                if (std::ranges::count(fit.model.offsets, offset) == 0) candidates.push_back(offset);
            }
        }
        std::vector<std::pair<double, u32>> gains(candidates.size());
        parallelFor(threads, static_cast<u32>(candidates.size()), [&](u32 i) {
            gains[i] = {gainOf(candidates[i], sample, fit, step), candidates[i]};
        });
        std::ranges::sort(gains, std::greater{});
        gains.resize(std::min(gains.size(), candidateCount));
        // The best candidate is used from now on.
        fit.model.offsets.push_back(gains.front().second);
        candidates.clear();
        for (std::size_t i = 1; i < gains.size(); ++i) candidates.push_back(gains[i].second);
        fit.model = modelOfCounts(fit.model.offsets, fit.counts);
        improveFit(fit, sample, 1, threads);
    }
    // Costs and parsing reinforce each other, so the result depends on the start: a second one is tried.
    Fit fresh{firstModel(fit.model.offsets), {}, 0, {}};
    improveFit(fresh, sample, 12, threads);
    improveFit(fit, sample, 4, threads);
    return fresh.cost < fit.cost ? fresh.model : fit.model;
}

}  // namespace valku
