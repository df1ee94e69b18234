#pragma once

#include <vector>

#include "chess/types.h"

namespace valku {

// Writes bits as BitReader reads them.
class BitWriter {
  public:
    // The low `count` bits of `bits`, at most 32; those above are 0.
    void write(u32 bits, u32 count) {
        window = window << count | bits;
        held += count;
        for (; held >= 8; held -= 8) bytes.push_back(static_cast<u8>(window >> (held - 8)));
    }

    // Fills the last byte with zeros and returns all bytes. Nothing may be written afterwards.
    std::vector<u8> finish() {
        if (held > 0) write(0, 8 - held);
        return std::move(bytes);
    }

  private:
    std::vector<u8> bytes;
    u64 window = 0;
    u32 held = 0;  // bits not in `bytes` yet
};

}  // namespace valku
