#pragma once

#include <cstddef>
#include <span>

#include "chess/types.h"

namespace valku {

// Reads bytes as bits, the most significant bit of each byte first. After the end come zeros; overran() tells
// whether any of them were taken.
class BitReader {
  public:
    explicit BitReader(std::span<const u8> bytes)
        : next(bytes.data()), end(next + bytes.size()), left(static_cast<i64>(bytes.size()) * 8) {}

    // The next `count` bits, at most 32, without taking them.
    u32 peek(int count) {
        if (held < 32) fill();
        return static_cast<u32>(window >> 32 >> (32 - count));
    }

    // Takes bits that were peeked at.
    void skip(int count) {
        window <<= count;
        held -= count;
        left -= count;
    }

    u32 read(int count) {
        const u32 bits = peek(count);
        skip(count);
        return bits;
    }

    bool overran() const { return left < 0; }

  private:
    void fill() {
        for (; held <= 56; held += 8) {
            const u64 byte = next != end ? *next++ : 0;
            window |= byte << (56 - held);
        }
    }

    const u8* next;
    const u8* end;
    u64 window = 0;  // bits not taken yet, from the top
    int held = 0;    // their number
    i64 left;        // bits up to the end; negative after it
};

}  // namespace valku
