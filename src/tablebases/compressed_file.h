#pragma once

#include <array>
#include <istream>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "chess/types.h"
#include "tablebases/huffman_decoder.h"

// The compressed form of a table file: a header, and blocks that are decoded one by one. A block is a run of
// symbols of one canonical Huffman code for the whole file: a literal byte, or a match in the manner of LZ77
// (Ziv and Lempel, A Universal Algorithm for Sequential Data Compression, IEEE Transactions on Information
// Theory 23(3), 1977), which copies earlier bytes of the block from one of 24 distances. All numbers are
// big-endian.
//
//      0  banner, 64 bytes
//     64  u32 size of the header
//     70  u8 logarithm of the block size
//     71  u8 number of match distances
//     72  u32 number of blocks
//     76  u32 format
//     80  for each block two u32 checks, of its bytes and of its stored form
//         bit fields as wide as the logarithm: sizes of the stored blocks, bytes in the last block, match
//         distances; a size of 0 is the full block size
//         code lengths, from a whole byte on
//         u32 check of the header before it

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

// Symbols of the code: literal bytes, then 32 length classes for each match distance.
constexpr u32 literalSymbols = 256;
constexpr u32 lengthClasses = 32;
constexpr u32 plainLengthClasses = 15;  // class c is length c + 1; extra bits follow the others
constexpr u32 codeSymbols = literalSymbols + matchOffsets * lengthClasses;

// The header of a file, kept as long as the file is registered.
struct DecodeInfo {
    u32 blockCount = 0;
    u32 blockSize = 0;
    u32 lastBlockSize = 0;
    u32 blockLog = 0;
    std::array<u32, matchOffsets> offsets{};
    std::vector<u64> blockStart;  // places in the file; one more, the end of the last block
    HuffmanDecoder blockCode;

    // Bytes of the table.
    u64 decodedSize() const { return u64{blockCount - 1} * blockSize + lastBlockSize; }
    u32 sizeOfBlock(u32 block) const { return block + 1 < blockCount ? blockSize : lastBlockSize; }
    // Bytes of memory.
    std::size_t memoryUsed() const;
};

// The number in the four bytes at `place`.
u32 numberAt(std::span<const u8> bytes, std::size_t place);

// Fills `bytes` from the file. False if it ends before.
bool readBytes(std::istream& file, std::span<u8> bytes);

// The check that headers and blocks carry, a variant of CRC-32.
u32 headerCheck(std::span<const u8> bytes);

// Reads the header at the start of a file. Throws a Fault ("read error", "file broken" or "out of memory").
// Nothing in the header is trusted, and no more memory is asked for than about three times the file's size.
std::unique_ptr<DecodeInfo> readCompressedHeader(std::istream& file);

// Room for one stored block.
struct DecodeBlock {
    std::array<u8, tableBlockSize> stored;
};

// Reads a block and decodes it to the start of `output`, which has room for it. Throws a Fault
// if the block cannot be read or is visibly damaged; other damage gives wrong bytes. Nothing outside the
// block is ever read or written.
void decodeBlock(DecodeBlock& context, std::istream& file, const DecodeInfo& info, u32 block,
                 std::span<u8> output);

}  // namespace valku
