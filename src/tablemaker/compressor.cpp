#include "tablemaker/compressor.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <new>
#include <string_view>

#include "platform/file_replacement.h"
#include "tablebases/block_decoder.h"
#include "tablebases/compressed_header.h"
#include "tablemaker/bit_writer.h"
#include "tablemaker/code_writer.h"
#include "tablemaker/match_parser.h"
#include "tablemaker/offset_choice.h"
#include "tablemaker/parallel.h"

namespace valku {

namespace {

constexpr u32 blockCodeLimit = 20;  // bits; keeps reading a code short

void appendNumber(std::vector<u8>& bytes, u32 number) {
    for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<u8>(number >> shift));
}

std::vector<u8> packBlock(std::span<const u8> block, std::span<const Token> tokens, const CodeWriter& code) {
    BitWriter bits;
    for (const Token token : tokens) {
        code.write(bits, token.symbol);
        if (token.symbol < literalSymbols) continue;
        const u32 lengthClass = token.symbol % lengthClasses;
        bits.write(token.length - shortestOfClass(lengthClass), classBits(lengthClass));
    }
    std::vector<u8> packed = bits.finish();
    if (packed.empty()) packed.push_back(0);  // a size of 0 stands for a full block
    // As many bytes as the block itself has mean that they are the block.
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
    appendNumber(header, 0);  // the header's size, known at the end
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

std::string describe(i32 error) {
    switch (errorKind(error)) {
        case tbReadError:
            return "read error";
        case tbOutOfMemory:
            return "out of memory";
        case tbBrokenFile:
            return "file broken";
        default:
            return "error " + std::to_string(error);
    }
}

std::string_view textOf(const std::vector<u8>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

u64 compressTable(std::span<const u8> plain, const std::string& path, int threads) {
    if (plain.empty()) return 0;
    FileReplacement file(path);
    if (!file.isOpen()) return 0;
    TableBlocks blocks;
    for (std::size_t place = 0; place < plain.size(); place += tableBlockSize)
        blocks.push_back(plain.subspan(place, std::min<std::size_t>(tableBlockSize, plain.size() - place)));

    // What the sample taught is corrected by what the whole table has.
    const ParseModel learned = chooseOffsets(blocks, threads);
    const std::vector<u32>& offsets = learned.offsets;
    const ParseModel model = modelOfCounts(offsets, parseTable(blocks, learned, threads).counts);
    const ParsedTable parsed = parseTable(blocks, model, threads);
    const std::vector<u32> lengths = codeLengths(parsed.counts, blockCodeLimit);
    const CodeWriter code(lengths);
    std::vector<std::vector<u8>> stored(blocks.size());
    inParallel(threads, static_cast<u32>(blocks.size()),
               [&](u32 i) { stored[i] = packBlock(blocks[i], parsed.tokens[i], code); });

    const std::vector<u8> header = headerOf(blocks, stored, offsets, lengths);
    file.write(textOf(header));
    u64 size = header.size();
    for (const std::vector<u8>& block : stored) {
        file.write(textOf(block));
        size += block.size();
    }
    return file.putInPlace() ? size : 0;
}

bool expandTable(const std::string& path, std::vector<u8>& plain, std::string& error) {
    try {
        error.clear();
        std::ifstream file(path, std::ios::binary);
        i32 headerError = 0;
        const std::unique_ptr<DecodeInfo> info = readCompressedHeader(file, headerError);
        if (!info || info->blockSize != tableBlockSize) {
            error = path + ": " + (info ? "unsupported block size" : describe(headerError));
            return false;
        }
        std::vector<u8> checks(std::size_t{info->blockCount} * 8);
        file.seekg(checksPlace);
        readBytes(file, checks);
        plain.clear();
        DecodeBlock context;
        for (u32 block = 0; error.empty() && block < info->blockCount; ++block) {
            const u32 size = info->sizeOfBlock(block);
            plain.resize(plain.size() + size);
            const std::span<u8> decoded = std::span(plain).last(size);
            const i32 result = decodeBlock(context, file, *info, block, decoded);
            if (result != 0) {
                error = describe(result);
            } else if (headerCheck(decoded) != numberAt(checks, block * std::size_t{8})) {
                error = "wrong bytes";
            }
            if (!error.empty()) error += " in block " + std::to_string(block);
        }
    } catch (const std::bad_alloc&) {
        error = "out of memory";
    }
    if (error.empty()) return true;
    error = path + ": " + error;
    return false;
}

}  // namespace valku
