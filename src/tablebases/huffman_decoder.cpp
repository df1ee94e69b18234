#include "tablebases/huffman_decoder.h"

#include <algorithm>
#include <array>

namespace valku {

namespace {

// Kraft's inequality with equality: from the longest length down, two codes of a length take the room of one
// that is a bit shorter.
bool isComplete(const std::array<u32, longestCode + 1>& codesOfLength) {
    u32 room = 0;
    for (u32 length = longestCode; length >= 1; --length) {
        room += codesOfLength[length];
        if (room % 2 != 0) return false;
        room /= 2;
    }
    return room == 1;
}

}  // namespace

std::optional<std::vector<u32>> canonicalCodes(std::span<const u32> lengths) {
    std::array<u32, longestCode + 1> codesOfLength{};
    u32 symbols = 0;
    for (const u32 length : lengths) {
        if (length > longestCode) return std::nullopt;
        if (length == 0) continue;
        ++codesOfLength[length];
        ++symbols;
    }
    std::vector<u32> codes(lengths.size());
    if (symbols == 0 || (symbols == 1 && codesOfLength[1] == 1)) return codes;
    if (!isComplete(codesOfLength)) return std::nullopt;

    std::array<u32, longestCode + 1> nextCode{};
    for (u32 length = 1; length < longestCode; ++length)
        nextCode[length + 1] = (nextCode[length] + codesOfLength[length]) * 2;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        if (lengths[symbol] != 0) codes[symbol] = nextCode[lengths[symbol]]++;
    }
    return codes;
}

bool HuffmanDecoder::build(std::span<const u32> lengths, int firstLevelBits) {
    const std::optional<std::vector<u32>> codes = canonicalCodes(lengths);
    if (!codes) return false;
    const auto used = lengths.size() - static_cast<std::size_t>(std::ranges::count(lengths, 0U));
    if (used <= 1) {
        const auto symbol = std::ranges::max_element(lengths) - lengths.begin();
        tableBits = 0;
        table.assign(1, static_cast<i16>(used == 0 ? 0 : symbol * 32));
        return true;
    }
    const auto bits = static_cast<u32>(firstLevelBits);
    tableBits = firstLevelBits;
    table.assign(std::size_t{1} << bits, 0);
    for (u32 symbol = 0; symbol < lengths.size(); ++symbol) {
        const u32 length = lengths[symbol];
        const u32 code = (*codes)[symbol];
        if (length == 0) continue;
        if (length <= bits) {
            const u32 spare = bits - length;
            std::fill_n(table.begin() + (code << spare), u32{1} << spare,
                        static_cast<i16>(symbol * 32 + length));
            continue;
        }
        std::size_t place = code >> (length - bits);
        for (u32 below = length - bits; below > 0; --below) {
            if (table[place] == 0) {
                table[place] = static_cast<i16>(-static_cast<int>(table.size()));
                table.resize(table.size() + 2);
            }
            place = static_cast<std::size_t>(-table[place]) + (code >> (below - 1) & 1);
        }
        table[place] = static_cast<i16>(symbol * 32);
    }
    table.shrink_to_fit();
    return true;
}

bool decodeLengths(BitReader& bits, std::span<u32> lengths) {
    constexpr std::size_t lengthsOfCodes = 128;
    constexpr std::size_t symbols = lengthsOfCodes / 2;  // of each of the two codes
    constexpr u32 repeats = 32;                          // from this symbol of the first code on
    constexpr int firstLevelBits = 8;

    std::ranges::fill(lengths, 0U);
    if (bits.read(1) != 0) return true;
    std::size_t count = 0;
    if (lengths.size() <= lengthsOfCodes) {
        const int width = static_cast<int>(bits.read(5));
        while (count < lengths.size()) {
            lengths[count] = bits.read(width);
            if (lengths[count++] == 0) count += bits.read(4);
        }
        return count == lengths.size();
    }

    std::array<u32, lengthsOfCodes> codeLengths;
    HuffmanDecoder values, runs;
    if (!decodeLengths(bits, codeLengths) ||
        !values.build(std::span(codeLengths).first<symbols>(), firstLevelBits) ||
        !runs.build(std::span(codeLengths).last<symbols>(), firstLevelBits))
        return false;
    while (count < lengths.size()) {
        const auto value = static_cast<u32>(values.read(bits));
        if (value < repeats) {
            lengths[count++] = value;
            continue;
        }
        u64 run = static_cast<u64>(runs.read(bits));
        if (run >= 32) {
            const int extraBits = static_cast<int>(run - 32);
            run = (u64{1} << extraBits) + bits.read(extraBits) + 31;
        }
        run += 2;
        if (run > lengths.size() - count) return false;
        std::fill_n(lengths.begin() + static_cast<std::ptrdiff_t>(count), run, value - repeats);
        count += run;
    }
    return true;
}

}  // namespace valku
