#pragma once

#include <optional>
#include <span>
#include <vector>

#include "chess/types.h"
#include "tablebases/bit_reader.h"

namespace valku {

constexpr u32 longestCode = 31;  // bits

// The codes that belong to these lengths, in bits; 0 is a symbol without a code. Shorter codes are the lower
// numbers, and of one length those of lower symbols. Nothing if a length is above longestCode or if the codes
// do not use up all patterns of bits; a single code has length 1 and is never written.
std::optional<std::vector<u32>> canonicalCodes(std::span<const u32> lengths);

// A prefix code for reading. With no symbol every read gives symbol 0, with one symbol that one, and neither
// takes a bit.
class BlockCode {
  public:
    // At most 1024 lengths, as for canonicalCodes. One look-up resolves `firstLevelBits` bits. False if the
    // lengths make no code.
    bool build(std::span<const u32> lengths, int firstLevelBits);

    int read(BitReader& bits) const {
        int entry = table[bits.peek(tableBits)];
        if (entry < 0) {
            bits.skip(tableBits);
            do entry = table[static_cast<u32>(-entry) + bits.read(1)];
            while (entry < 0);
        }
        bits.skip(entry % 32);
        return entry / 32;
    }

    std::size_t memoryUsed() const { return table.size() * sizeof(i16); }

  private:
    int tableBits = 0;
    // symbol * 32 + the bits still to take, or the negated place of the entries for a next bit of 0 and of 1.
    // The first level fills the first 2^tableBits places.
    std::vector<i16> table{0};
};

// Reads the lengths of a code, which are packed with prefix codes themselves. False if they are damaged;
// `bits` may have been overrun.
bool decodeLengths(BitReader& bits, std::span<u32> lengths);

}  // namespace valku
