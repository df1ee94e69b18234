#include "tablebases/compressed_file.h"

#include <algorithm>
#include <new>

#include "platform/fault.h"
#include "tablebases/bit_reader.h"

namespace valku {

namespace {

constexpr int firstLevelBits = 13;

constexpr const char* readError = "read error";
constexpr const char* brokenFile = "file broken";

// CRC-32 (Peterson and Brown, Cyclic Codes for Error Detection, Proceedings of the IRE 49(1), 1961) with two
// deviations that the format wants: the table applies the polynomial where the bit is 0, and the register
// starts at 0 and is not inverted.
constexpr std::array<u32, 256> checkTable = [] {
    std::array<u32, 256> table{};
    for (u32 i = 0; i < 256; ++i) {
        u32 x = i;
        for (int bit = 0; bit < 8; ++bit) x = x % 2 != 0 ? x >> 1 : x >> 1 ^ 0xEDB88320;
        table[i] = x;
    }
    return table;
}();

// The text between the fixed beginning and end names whoever wrote the file.
bool isBanner(std::span<const u8> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bannerTextSize);
    return text.starts_with(compressedBanner) && text.ends_with(bannerEnd) &&
           numberAt(bytes, bannerTextSize) == 0;
}

// Places of what follows the first 80 bytes.
struct HeaderLayout {
    u64 fields;
    u64 codeLengths;
    u64 check;
};

void readFields(std::span<const u8> header, const HeaderLayout& layout, DecodeInfo& info) {
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
        throw Fault(brokenFile);
}

void readHeader(std::istream& file, DecodeInfo& info) {
    std::array<u8, checksPlace> start;
    if (!readBytes(file, start)) throw Fault(readError);
    const u32 headerSize = numberAt(start, 64);
    info.blockLog = start[70];
    info.blockSize = 1U << std::min<u32>(info.blockLog, largestBlockLog);
    info.blockCount = numberAt(start, 72);
    if (!isBanner(start) || headerSize < smallestHeader || info.blockLog > largestBlockLog ||
        start[71] != matchOffsets || numberAt(start, 76) != compressedFormat)
        throw Fault(brokenFile);

    // Sizes are trusted only as far as the file goes.
    HeaderLayout layout;
    layout.fields = checksPlace + u64{8} * info.blockCount;
    layout.codeLengths = layout.fields + ((u64{info.blockCount} + 1 + matchOffsets) * info.blockLog + 7) / 8;
    layout.check = headerSize - 4;
    if (info.blockCount == 0 || layout.codeLengths > layout.check) throw Fault(brokenFile);
    file.seekg(0, std::ios::end);
    if (!file.good() || file.tellg() < static_cast<std::streamoff>(headerSize)) throw Fault(readError);
    file.seekg(checksPlace);

    std::vector<u8> header(headerSize);
    std::ranges::copy(start, header.begin());
    if (!readBytes(file, std::span(header).subspan(checksPlace))) throw Fault(readError);
    if (headerCheck(std::span(header).first(layout.check)) != numberAt(header, layout.check))
        throw Fault(brokenFile);
    readFields(header, layout, info);
}

// The length of a match; extra bits follow for the longer classes.
u32 readMatchLength(u32 lengthClass, BitReader& bits) {
    if (lengthClass < plainLengthClasses) return lengthClass + 1;
    const int extraBits = static_cast<int>(lengthClass - plainLengthClasses) + 1;
    return (u32{1} << extraBits) + bits.read(extraBits) + plainLengthClasses - 1;
}

void unpack(std::span<const u8> stored, const DecodeInfo& info, std::span<u8> output) {
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
        if (distance == 0 || distance > size) throw Fault(brokenFile);
        // A match may overlap its own copy, and is cut at the end of the block.
        const std::size_t matchEnd = std::min(output.size(), size + length);
        for (; size < matchEnd; ++size) output[size] = output[size - distance];
    }
    if (bits.overran()) throw Fault(brokenFile);
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

std::unique_ptr<DecodeInfo> readCompressedHeader(std::istream& file) {
    try {
        auto info = std::make_unique<DecodeInfo>();
        readHeader(file, *info);
        return info;
    } catch (const std::bad_alloc&) {
        throw Fault("out of memory");
    }
}

void decodeBlock(DecodeBlock& context, std::istream& file, const DecodeInfo& info, u32 block,
                 std::span<u8> output) {
    if (block >= info.blockCount || info.blockSize != tableBlockSize) throw Fault("no such block");
    const u32 decoded = info.sizeOfBlock(block);
    const auto storedSize = static_cast<std::size_t>(info.blockStart[block + 1] - info.blockStart[block]);
    file.clear();
    file.seekg(static_cast<std::streamoff>(info.blockStart[block]));
    const std::span<u8> stored = std::span(context.stored).first(storedSize);
    if (!readBytes(file, stored)) throw Fault(readError);
    if (storedSize == decoded) {
        std::ranges::copy(stored, output.begin());
    } else {
        unpack(stored, info, output.first(decoded));
    }
}

}  // namespace valku
