#pragma once

#include <optional>
#include <span>
#include <vector>

#include "chess/types.h"
#include "tablebases/bit_reader.h"

// Canonical Huffman codes: Schwartz and Kallick, Generating a Canonical Prefix Encoding, CACM 7(3), 1964;
// https://en.wikipedia.org/wiki/Canonical_Huffman_code. The lengths of the codes alone determine them.

namespace valku {

constexpr u32 longestCode = 31;  // bits

// The codes for these lengths in bits; 0 is a symbol without a code. Shorter codes have lower values, and of
// one length those of lower symbols. Nothing if a length is above longestCode or the code is not complete,
// that is if Kraft's inequality does not hold with equality. A symbol that is alone has length 1, and its
// code is never written.
std::optional<std::vector<u32>> canonicalCodes(std::span<const u32> lengths);

class HuffmanDecoder {
  public:
    // At most 1024 lengths, as for canonicalCodes; one look-up resolves `firstLevelBits` bits. False if the
    // lengths make no code.
    bool build(std::span<const u32> lengths, int firstLevelBits);

    // The next symbol. A code without symbols gives symbol 0, one with a single symbol that one; neither
    // takes a bit.
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

    // Bytes.
    std::size_t memoryUsed() const { return table.size() * sizeof(i16); }

  private:
    int tableBits = 0;
    // symbol * 32 + bits still to take, or the negated place of the two entries for a next bit of 0 and of 1.
    // The first level fills the first 2^tableBits places.
    std::vector<i16> table{0};
};

// Reads the lengths of a code, which are themselves packed with two Huffman codes. False if they are damaged;
// `bits` may then have been overrun.
bool decodeLengths(BitReader& bits, std::span<u32> lengths);

}  // namespace valku
