#pragma once

#include <span>
#include <vector>

#include "chess/types.h"
#include "tablemaker/bit_writer.h"

namespace valku {

// The lengths of the best prefix code for symbols that are this frequent, with no code above `limit` bits. A
// symbol that does not occur has length 0, and one that occurs alone length 1.
std::vector<u32> codeLengths(std::span<const u32> counts, u32 limit);

// A prefix code for writing, which BlockCode with the same lengths reads.
class CodeWriter {
  public:
    explicit CodeWriter(std::vector<u32> codeLengths);
    void write(BitWriter& bits, u32 symbol) const { bits.write(codes[symbol], lengths[symbol]); }

  private:
    std::vector<u32> lengths;
    std::vector<u32> codes;
};

// Writes lengths of at most longestCode as decodeLengths reads them.
void encodeLengths(BitWriter& bits, std::span<const u32> lengths);

}  // namespace valku
