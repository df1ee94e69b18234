#include "tablebases/block_decoder.h"

#include <algorithm>

#include "tablebases/bit_reader.h"

namespace valku {

namespace {

// The length of a match of this class; further bits follow for the longer ones.
u32 readMatchLength(u32 lengthClass, BitReader& bits) {
    if (lengthClass < plainLengthClasses) return lengthClass + 1;
    const int extraBits = static_cast<int>(lengthClass - plainLengthClasses) + 1;
    return (u32{1} << extraBits) + bits.read(extraBits) + plainLengthClasses - 1;
}

i32 unpack(std::span<const u8> stored, const DecodeInfo& info, std::span<u8> output) {
    BitReader bits(stored);
    std::size_t size = 0;
    while (size < output.size()) {
        const auto symbol = static_cast<u32>(info.blockCode.read(bits));
        if (symbol < literalSymbols) {
            output[size++] = static_cast<u8>(symbol);
            continue;
        }
        const u32 match = symbol - literalSymbols;
        const u32 distance = info.offsets[match / lengthClasses];
        const u32 length = readMatchLength(match % lengthClasses, bits);
        if (distance == 0 || distance > size) return errorAt(9, tbBrokenFile);
        // A match may reach into what it copies itself, and past the end of the block.
        const std::size_t matchEnd = std::min(output.size(), size + length);
        for (; size < matchEnd; ++size) output[size] = output[size - distance];
    }
    return bits.overran() ? errorAt(10, tbBrokenFile) : 0;
}

}  // namespace

i32 decodeBlock(DecodeBlock& context, std::istream& file, const DecodeInfo& info, u32 block,
                std::span<u8> output) {
    if (block >= info.blockCount || info.blockSize != tableBlockSize) return errorAt(11, tbBadArgument);
    const u32 decoded = info.sizeOfBlock(block);
    const auto storedSize = static_cast<std::size_t>(info.blockStart[block + 1] - info.blockStart[block]);
    if (decoded > output.size() || storedSize > context.stored.size()) return errorAt(12, tbBadArgument);

    file.clear();
    file.seekg(static_cast<std::streamoff>(info.blockStart[block]));
    const std::span<u8> stored = std::span(context.stored).first(storedSize);
    if (!readBytes(file, stored)) return errorAt(13, tbReadError);
    if (storedSize != decoded) return unpack(stored, info, output.first(decoded));
    std::ranges::copy(stored, output.begin());
    return 0;
}

}  // namespace valku
