#pragma once

#include <span>
#include <vector>

#include "chess/types.h"
#include "tablemaker/bit_writer.h"

// Writes the codes that tablebases/huffman_decoder.h reads.

namespace valku {

// Code lengths for symbols that are this frequent, none above `limit` bits. The lengths are optimal (Huffman,
// A Method for the Construction of Minimum-Redundancy Codes, Proceedings of the IRE 40(9), 1952) unless the
// limit is in the way; then the counts are halved until it is not. A symbol that does not occur has length 0,
// one that occurs alone length 1.
std::vector<u32> codeLengths(std::span<const u32> counts, u32 limit);

class HuffmanEncoder {
  public:
    // Of lengths from which canonicalCodes makes a code.
    explicit HuffmanEncoder(std::vector<u32> codeLengths);
    void write(BitWriter& bits, u32 symbol) const { bits.write(codes[symbol], lengths[symbol]); }

  private:
    std::vector<u32> lengths;
    std::vector<u32> codes;
};

// Writes lengths, none above longestCode, as decodeLengths reads them.
void encodeLengths(BitWriter& bits, std::span<const u32> lengths);

}  // namespace valku
