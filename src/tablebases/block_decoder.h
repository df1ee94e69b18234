#pragma once

#include <array>
#include <istream>
#include <span>

#include "chess/types.h"
#include "tablebases/compressed_header.h"

namespace valku {

// Room for one stored block, which is what decoding needs besides the header.
struct DecodeBlock {
    std::array<u8, tableBlockSize> stored;
};

// Reads a block and decodes it to the start of `output`, which has room for a block of tableBlockSize; no
// file may have another block size. `decoded` becomes the size. Returns 0 or an error code: damage that can
// be seen is an error, other damage gives wrong bytes, and nothing outside the block is ever read or written.
i32 decodeBlock(DecodeBlock& context, std::istream& file, const DecodeInfo& info, u32 block,
                std::span<u8> output);

}  // namespace valku
