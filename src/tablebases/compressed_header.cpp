#include "tablebases/compressed_header.h"

#include <algorithm>
#include <new>

#include "tablebases/bit_reader.h"

namespace valku {

namespace {

constexpr int firstLevelBits = 13;

// A CRC-32 whose table turns on the wrong half of its cases.
constexpr std::array<u32, 256> checkTable = [] {
    std::array<u32, 256> table{};
    for (u32 i = 0; i < 256; ++i) {
        u32 x = i;
        for (int bit = 0; bit < 8; ++bit) x = x % 2 != 0 ? x >> 1 : x >> 1 ^ 0xEDB88320;
        table[i] = x;
    }
    return table;
}();

// The text between the known beginning and the known end names whoever wrote the file.
bool isBanner(std::span<const u8> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bannerTextSize);
    return text.starts_with(compressedBanner) && text.ends_with(bannerEnd) &&
           numberAt(bytes, bannerTextSize) == 0;
}

// The places of the fields behind the first 80 bytes, in bytes.
struct HeaderLayout {
    u64 fields;
    u64 codeLengths;
    u64 check;
};

i32 readFields(std::span<const u8> header, const HeaderLayout& layout, DecodeInfo& info) {
    BitReader fields(header.subspan(layout.fields));
    const int width = static_cast<int>(info.blockLog);
    const auto readSize = [&] {
        const u32 size = fields.read(width);
        return size != 0 ? size : info.blockSize;
    };
    info.blockStart.reserve(std::size_t{info.blockCount} + 1);
    info.blockStart.push_back(header.size());
    for (u32 block = 0; block < info.blockCount; ++block)
        info.blockStart.push_back(info.blockStart.back() + readSize());
    info.lastBlockSize = readSize();
    for (u32& offset : info.offsets) offset = fields.read(width);

    BitReader lengthBits(header.subspan(layout.codeLengths, layout.check - layout.codeLengths));
    std::array<u32, codeSymbols> lengths;
    if (!decodeLengths(lengthBits, lengths) || lengthBits.overran() ||
        !info.blockCode.build(lengths, firstLevelBits))
        return errorAt(1, tbBrokenFile);
    return 0;
}

i32 readHeader(std::istream& file, DecodeInfo& info) {
    std::array<u8, checksPlace> start;
    if (!readBytes(file, start)) return errorAt(2, tbReadError);
    const u32 headerSize = numberAt(start, 64);
    info.blockLog = start[70];
    info.blockSize = 1U << std::min<u32>(info.blockLog, largestBlockLog);
    info.blockCount = numberAt(start, 72);
    if (!isBanner(start) || headerSize < smallestHeader || info.blockLog > largestBlockLog ||
        start[71] != matchOffsets || numberAt(start, 76) != compressedFormat)
        return errorAt(3, tbBrokenFile);

    // The sizes are believed only as far as the file goes.
    HeaderLayout layout;
    layout.fields = checksPlace + u64{8} * info.blockCount;
    layout.codeLengths = layout.fields + ((u64{info.blockCount} + 1 + matchOffsets) * info.blockLog + 7) / 8;
    layout.check = headerSize - 4;
    if (info.blockCount == 0 || layout.codeLengths > layout.check) return errorAt(4, tbBrokenFile);
    file.seekg(0, std::ios::end);
    if (!file.good() || file.tellg() < static_cast<std::streamoff>(headerSize))
        return errorAt(5, tbReadError);
    file.seekg(checksPlace);

    std::vector<u8> header(headerSize);
    std::ranges::copy(start, header.begin());
    if (!readBytes(file, std::span(header).subspan(checksPlace))) return errorAt(6, tbReadError);
    if (headerCheck(std::span(header).first(layout.check)) != numberAt(header, layout.check))
        return errorAt(7, tbBrokenFile);
    return readFields(header, layout, info);
}

}  // namespace

std::size_t DecodeInfo::memoryUsed() const {
    return sizeof(*this) + blockStart.size() * sizeof(blockStart[0]) + blockCode.memoryUsed();
}

u32 numberAt(std::span<const u8> bytes, std::size_t place) {
    u32 number = 0;
    for (const u8 byte : bytes.subspan(place, 4)) number = number << 8 | byte;
    return number;
}

bool readBytes(std::istream& file, std::span<u8> bytes) {
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return file.good();
}

u32 headerCheck(std::span<const u8> bytes) {
    u32 check = 0;
    for (const u8 byte : bytes) check = check >> 8 ^ checkTable[(check ^ byte) & 255];
    return check;
}

std::unique_ptr<DecodeInfo> readCompressedHeader(std::istream& file, i32& error) {
    try {
        auto info = std::make_unique<DecodeInfo>();
        error = readHeader(file, *info);
        if (error != 0) info.reset();
        return info;
    } catch (const std::bad_alloc&) {
        error = errorAt(8, tbOutOfMemory);
        return nullptr;
    }
}

}  // namespace valku
