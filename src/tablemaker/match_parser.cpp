#include "tablemaker/match_parser.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tablemaker/parallel_for.h"

namespace valku {

namespace {

constexpr std::array<u8, tableBlockSize + 1> classOfLength = [] {
    std::array<u8, tableBlockSize + 1> classes{};
    u8 lengthClass = 0;
    for (u32 length = 1; length <= tableBlockSize; ++length) {
        if (length == shortestOfClass(lengthClass + 1U)) ++lengthClass;
        classes[length] = lengthClass;
    }
    return classes;
}();

u32 costOfShare(double share) {
    return static_cast<u32>(std::lround(-std::log2(share) * costUnit));
}

}  // namespace

ParseModel firstModel(const std::vector<u32>& offsets) {
    ParseModel model{offsets, {}};
    for (u32 symbol = 0; symbol < codeSymbols; ++symbol) {
        const u32 lengthClass = symbol % lengthClasses;
        model.costs[symbol] = symbol < literalSymbols
                                  ? 8 * costUnit
                                  : (5 + lengthClass / 5 + classBits(lengthClass)) * costUnit;
    }
    return model;
}

ParseModel modelOfCounts(const std::vector<u32>& offsets, const SymbolCounts& counts) {
    std::array<double, lengthClasses> ofClass{};
    std::array<double, matchOffsets> ofOffset{};
    double matches = 1;
    for (u32 match = 0; match + literalSymbols < codeSymbols; ++match) {
        const u32 count = counts[literalSymbols + match];
        ofClass[match % lengthClasses] += count;
        ofOffset[match / lengthClasses] += count;
        matches += count;
    }
    const double total = std::accumulate(counts.begin(), counts.end(), 1.0);
    ParseModel model{offsets, {}};
    for (u32 symbol = 0; symbol < codeSymbols; ++symbol) {
        if (symbol < literalSymbols) {
            model.costs[symbol] = costOfShare((counts[symbol] + 0.1) / total);
            continue;
        }
        // A rare match counts for more if its distance and its length are frequent; a new distance is taken
        // to be that of one match in a hundred.
        const u32 match = symbol - literalSymbols;
        const u32 lengthClass = match % lengthClasses;
        const double ofThisOffset = std::max(ofOffset[match / lengthClasses] / matches, 0.01);
        const double expected = ofThisOffset * (ofClass[lengthClass] + 0.1);
        const double likely = counts[symbol] + 2 * expected / (expected + 2) + 0.01;
        model.costs[symbol] = costOfShare(likely / total) + classBits(lengthClass) * costUnit;
    }
    return model;
}

ParsedBlock::ParsedBlock(std::span<const u8> bytes, const ParseModel& model)
    : size(static_cast<u32>(bytes.size())) {
    parse(bytes, model);
}

void ParsedBlock::parse(std::span<const u8> bytes, const ParseModel& model) {
    const auto offsetCount = static_cast<u32>(model.offsets.size());
    std::array<u32, matchOffsets> cheapest{};  // symbol of each distance
    for (u32 i = 0; i < offsetCount; ++i)
        cheapest[i] = *std::min_element(&model.costs[literalSymbols + i * lengthClasses],
                                        &model.costs[literalSymbols + i * lengthClasses] + lengthClasses);
    std::array<u32, matchOffsets> run{};  // the longest match of each distance from `place`
    costs[size] = 0;
    for (u32 place = size; place-- > 0;) {
        const u8 byte = bytes[place];
        u32 bestCost = model.costs[byte] + costs[place + 1];
        Token token{byte, 1};
        for (u32 i = 0; i < offsetCount; ++i) {
            const u32 offset = model.offsets[i];
            run[i] = offset <= place && bytes[place - offset] == byte ? run[i] + 1 : 0;
            // A shorter rest of the block is cheaper, to within a bit or two.
            if (run[i] == 0 || cheapest[i] + costs[place + run[i]] >= bestCost) continue;
            const auto consider = [&](u32 lengthClass, u32 length) {
                const u32 symbol = literalSymbols + i * lengthClasses + lengthClass;
                const u32 cost = model.costs[symbol] + costs[place + length];
                if (cost >= bestCost) return;
                bestCost = cost;
                token = {static_cast<u16>(symbol), static_cast<u16>(length)};
            };
            const u32 lengthClass = classOfLength[run[i]];
            consider(lengthClass, run[i]);
            for (u32 shorter = lengthClass; shorter > 0; --shorter)
                consider(shorter - 1, shortestOfClass(shorter) - 1);
        }
        costs[place] = bestCost;
        best[place] = token;
    }
}

ParsedTable parseTable(const TableBlocks& blocks, const ParseModel& model, int threads) {
    ParsedTable parsed{std::vector<std::vector<Token>>(blocks.size()), {}};
    parallelFor(threads, static_cast<u32>(blocks.size()), [&](u32 i) {
        ParsedBlock(blocks[i], model).forTokens([&](Token token) { parsed.tokens[i].push_back(token); });
        parsed.tokens[i].shrink_to_fit();
    });
    for (const std::vector<Token>& tokens : parsed.tokens) {
        for (const Token token : tokens) ++parsed.counts[token.symbol];
    }
    return parsed;
}

}  // namespace valku
