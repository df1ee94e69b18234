#pragma once

#include <array>
#include <span>
#include <vector>

#include "chess/types.h"
#include "tablebases/compressed_file.h"

// Cuts blocks into the symbols of the compressed form (tablebases/compressed_file.h) by optimal parsing:
// dynamic programming from the end of the block finds the tokens of the least total cost (Storer and
// Szymanski, Data Compression via Textual Substitution, Journal of the ACM 29(4), 1982).

namespace valku {

// Costs are in bits times costUnit.
constexpr u32 costUnit = 64;

// Extra bits of a length class, and the shortest length in it.
constexpr u32 classBits(u32 lengthClass) {
    return lengthClass < plainLengthClasses ? 0 : lengthClass - plainLengthClasses + 1;
}
constexpr u32 shortestOfClass(u32 lengthClass) {
    return lengthClass < plainLengthClasses ? lengthClass + 1
                                            : (1U << classBits(lengthClass)) + plainLengthClasses - 1;
}

// One symbol, and the number of bytes that it stands for.
struct Token {
    u16 symbol;
    u16 length;
};

using SymbolCounts = std::array<u32, codeSymbols>;

struct ParseModel {
    std::vector<u32> offsets;            // match distances in bytes; at most matchOffsets of them
    std::array<u32, codeSymbols> costs;  // extra bits included
};

// A model to start from, in which literals are expensive and matches cheap.
ParseModel firstModel(const std::vector<u32>& offsets);

// The model in which a symbol costs what an entropy code for these counts would give it.
ParseModel modelOfCounts(const std::vector<u32>& offsets, const SymbolCounts& counts);

// The cheapest tokens for a block of at most tableBlockSize bytes.
class ParsedBlock {
  public:
    ParsedBlock(std::span<const u8> bytes, const ParseModel& model);

    // The cost from a place in the block to its end.
    u32 costFrom(u32 place) const { return costs[place]; }

    // Calls use(token) in the order of the block.
    template <class Use>
    void forTokens(Use use) const {
        for (u32 place = 0; place < size; place += best[place].length) use(best[place]);
    }

  private:
    void parse(std::span<const u8> bytes, const ParseModel& model);

    u32 size;
    std::array<u32, tableBlockSize + 1> costs;
    std::array<Token, tableBlockSize> best;  // from each place
};

using TableBlocks = std::vector<std::span<const u8>>;

struct ParsedTable {
    std::vector<std::vector<Token>> tokens;  // by block
    SymbolCounts counts;
};

ParsedTable parseTable(const TableBlocks& blocks, const ParseModel& model, int threads);

}  // namespace valku
