#pragma once

#include <array>
#include <span>
#include <vector>

#include "chess/types.h"
#include "tablebases/compressed_header.h"

// Cuts blocks into the symbols of the compressed form, as cheaply as a table of costs allows.

namespace valku {

// Costs are in 1/costUnit bits.
constexpr u32 costUnit = 64;

// Bits that follow a match of this class, and the shortest length that it stands for.
constexpr u32 classBits(u32 lengthClass) {
    return lengthClass < plainLengthClasses ? 0 : lengthClass - plainLengthClasses + 1;
}
constexpr u32 shortestOfClass(u32 lengthClass) {
    return lengthClass < plainLengthClasses ? lengthClass + 1
                                            : (1U << classBits(lengthClass)) + plainLengthClasses - 1;
}

// One symbol, and how many bytes of the block it stands for.
struct Token {
    u16 symbol;
    u16 length;
};

using SymbolCounts = std::array<u32, codeSymbols>;

struct ParseModel {
    std::vector<u32> offsets;            // how far back matches may reach; at most matchOffsets of them
    std::array<u32, codeSymbols> costs;  // of a match with the bits that follow it
};

// A model from which parsing finds the matches that are worth it: with dear bytes and cheap matches.
ParseModel firstModel(const std::vector<u32>& offsets);

// The model in which symbols cost what they would if they were as frequent as here.
ParseModel modelOfCounts(const std::vector<u32>& offsets, const SymbolCounts& counts);

// A block of at most tableBlockSize bytes and the cheapest tokens for it.
class ParsedBlock {
  public:
    ParsedBlock(std::span<const u8> bytes, const ParseModel& model);

    // The cost from a place in the block to its end.
    u32 costFrom(u32 place) const { return costs[place]; }

    // Calls use(token) for the tokens in their order.
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

}  // namespace valku
