#include "tablemaker/compressor.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <new>
#include <string_view>

#include "platform/fault.h"
#include "platform/file_replacement.h"
#include "tablebases/compressed_file.h"
#include "tablemaker/bit_writer.h"
#include "tablemaker/huffman_encoder.h"
#include "tablemaker/match_offsets.h"
#include "tablemaker/match_parser.h"
#include "tablemaker/parallel_for.h"

namespace valku {

namespace {

constexpr u32 blockCodeLimit = 20;  // bits; keeps decoding fast

void appendNumber(std::vector<u8>& bytes, u32 number) {
    for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<u8>(number >> shift));
}

std::vector<u8> packBlock(std::span<const u8> block, std::span<const Token> tokens,
                          const HuffmanEncoder& code) {
    BitWriter bits;
    for (const Token token : tokens) {
        code.write(bits, token.symbol);
        if (token.symbol < literalSymbols) continue;
        const u32 lengthClass = token.symbol % lengthClasses;
        bits.write(token.length - shortestOfClass(lengthClass), classBits(lengthClass));
    }
    std::vector<u8> packed = bits.finish();
    if (packed.empty()) packed.push_back(0);  // a size field of 0 means a full block
    // A stored size equal to the block's means that the block is stored raw.
    if (packed.size() >= block.size()) packed.assign(block.begin(), block.end());
    return packed;
}

std::vector<u8> headerOf(const TableBlocks& blocks, const std::vector<std::vector<u8>>& stored,
                         const std::vector<u32>& offsets, std::span<const u32> lengths) {
    std::string banner = std::string(compressedBanner) + ", from the tables of Valku";
    banner.resize(bannerTextSize - bannerEnd.size(), ' ');
    banner += bannerEnd;
    std::vector<u8> header(banner.begin(), banner.end());
    appendNumber(header, 0);
    appendNumber(header, 0);  // the header's size, filled in at the end
    appendNumber(header, tableBlockLog << 8 | matchOffsets);
    appendNumber(header, static_cast<u32>(blocks.size()));
    appendNumber(header, compressedFormat);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        appendNumber(header, headerCheck(blocks[i]));
        appendNumber(header, headerCheck(stored[i]));
    }
    BitWriter fields, lengthBits;
    const auto writeField = [&fields](std::size_t number) {
        fields.write(static_cast<u32>(number) % tableBlockSize, tableBlockLog);
    };
    for (const std::vector<u8>& block : stored) writeField(block.size());
    writeField(blocks.back().size());
    for (const u32 offset : offsets) writeField(offset);
    encodeLengths(lengthBits, lengths);
    for (BitWriter* bits : {&fields, &lengthBits}) {
        const std::vector<u8> bytes = bits->finish();
        header.insert(header.end(), bytes.begin(), bytes.end());
    }
    std::vector<u8> size;
    appendNumber(size, static_cast<u32>(header.size() + 4));
    std::ranges::copy(size, header.begin() + 64);
    appendNumber(header, headerCheck(header));
    return header;
}

std::string_view textOf(const std::vector<u8>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Appends a decoded block. `checks`: the two checks of each block, as in the file.
void appendBlock(std::vector<u8>& plain, std::istream& file, const DecodeInfo& info, u32 block,
                 std::span<const u8> checks) {
    DecodeBlock context;
    const u32 size = info.sizeOfBlock(block);
    plain.resize(plain.size() + size);
    const std::span<u8> decoded = std::span(plain).last(size);
    try {
        decodeBlock(context, file, info, block, decoded);
        if (headerCheck(decoded) != numberAt(checks, block * std::size_t{8})) throw Fault("wrong bytes");
    } catch (const Fault& fault) {
        throw Fault(fault.text() + " in block " + std::to_string(block));
    }
}

}  // namespace

u64 compressTable(std::span<const u8> plain, const std::string& path, int threads) {
    FileReplacement file(path);
    if (!file.isOpen()) throw Fault(path + ": cannot be written");
    TableBlocks blocks;
    for (std::size_t place = 0; place < plain.size(); place += tableBlockSize)
        blocks.push_back(plain.subspan(place, std::min<std::size_t>(tableBlockSize, plain.size() - place)));

    // The costs from the sample are corrected with the counts of the whole table.
    const ParseModel learned = chooseOffsets(blocks, threads);
    const std::vector<u32>& offsets = learned.offsets;
    const ParseModel model = modelOfCounts(offsets, parseTable(blocks, learned, threads).counts);
    const ParsedTable parsed = parseTable(blocks, model, threads);
    const std::vector<u32> lengths = codeLengths(parsed.counts, blockCodeLimit);
    const HuffmanEncoder code(lengths);
    std::vector<std::vector<u8>> stored(blocks.size());
    parallelFor(threads, static_cast<u32>(blocks.size()),
                [&](u32 i) { stored[i] = packBlock(blocks[i], parsed.tokens[i], code); });

    const std::vector<u8> header = headerOf(blocks, stored, offsets, lengths);
    file.write(textOf(header));
    u64 size = header.size();
    for (const std::vector<u8>& block : stored) {
        file.write(textOf(block));
        size += block.size();
    }
    if (!file.putInPlace()) throw Fault(path + ": cannot be written");
    return size;
}

std::vector<u8> expandTable(const std::string& path) {
    try {
        std::ifstream file(path, std::ios::binary);
        const std::unique_ptr<DecodeInfo> info = readCompressedHeader(file);
        if (info->blockSize != tableBlockSize) throw Fault("unsupported block size");
        std::vector<u8> checks(std::size_t{info->blockCount} * 8);
        file.seekg(checksPlace);
        readBytes(file, checks);
        std::vector<u8> plain;
        for (u32 block = 0; block < info->blockCount; ++block) appendBlock(plain, file, *info, block, checks);
        return plain;
    } catch (const std::bad_alloc&) {
        throw Fault(path + ": out of memory");
    } catch (const Fault& fault) {
        throw Fault(path + ": " + fault.text());
    }
}

}  // namespace valku
