#pragma once

#include <array>
#include <istream>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "chess/types.h"
#include "tablebases/block_code.h"

// The compressed form of a table file: a header, and blocks that are decoded each by itself. A block is a run
// of symbols of one prefix code: a byte, or a match, which copies bytes from one of 24 distances back. All
// numbers are big-endian.
//
//      0  banner, 64 bytes
//     64  u32 size of the header
//     70  u8 logarithm of the block size
//     71  u8 number of match distances
//     72  u32 number of blocks
//     76  u32 format
//     80  for each block two u32 checks, of its bytes and of its stored form
//         sizes of the stored blocks, bytes in the last block, match distances: bit fields as wide as the
//         logarithm, in which a size of 0 is the full block size
//         lengths of the code, from a whole byte on
//         u32 check of all the header before it

namespace valku {

constexpr std::string_view compressedBanner = "Compressed by DATACOMP v 1.0";  // its beginning
constexpr std::size_t bannerTextSize = 60;                                     // four zero bytes follow
constexpr std::string_view bannerEnd = "\r\n";
constexpr std::size_t checksPlace = 80;
constexpr u32 compressedFormat = 0x004001F5;
constexpr int matchOffsets = 24;
constexpr std::size_t smallestHeader = 84;
constexpr int largestBlockLog = 16;
constexpr u32 tableBlockLog = 13;
constexpr u32 tableBlockSize = 1 << tableBlockLog;  // the only one in use

// Symbols of the code: bytes, then for each match distance 32 length classes.
constexpr u32 literalSymbols = 256;
constexpr u32 lengthClasses = 32;
constexpr u32 plainLengthClasses = 15;  // class c is length c + 1; the others are followed by bits
constexpr u32 codeSymbols = literalSymbols + matchOffsets * lengthClasses;

// An error code is a kind in the low byte and a place in the code above it; 0 is success.
enum TbError : i32 { tbReadError = 2, tbOutOfMemory = 5, tbBrokenFile = 6, tbBadArgument = 7 };

constexpr i32 errorAt(i32 place, TbError kind) {
    return place << 8 | kind;
}
constexpr i32 errorKind(i32 error) {
    return error & 0xFF;
}

// What decoding needs to know of a file, as long as it is registered.
struct DecodeInfo {
    u32 blockCount = 0;
    u32 blockSize = 0;
    u32 lastBlockSize = 0;
    u32 blockLog = 0;
    std::array<u32, matchOffsets> offsets{};
    std::vector<u64> blockStart;  // places in the file; one more, the end of the last block
    BlockCode blockCode;

    // Bytes in the file when decoded.
    u64 decodedSize() const { return u64{blockCount - 1} * blockSize + lastBlockSize; }
    u32 sizeOfBlock(u32 block) const { return block + 1 < blockCount ? blockSize : lastBlockSize; }
    std::size_t memoryUsed() const;
};

// The number in the four bytes at `place`.
u32 numberAt(std::span<const u8> bytes, std::size_t place);

// Fills `bytes` from the file. False if it ends before.
bool readBytes(std::istream& file, std::span<u8> bytes);

// The check over a run of bytes that headers and blocks carry.
u32 headerCheck(std::span<const u8> bytes);

// Reads the header at the start of a file. Nothing and an error code if it cannot be read; nothing in the
// header is trusted, and no more memory is asked for than the file has bytes, give or take a factor of three.
std::unique_ptr<DecodeInfo> readCompressedHeader(std::istream& file, i32& error);

}  // namespace valku
