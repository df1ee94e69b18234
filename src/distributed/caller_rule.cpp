#include "distributed/caller_rule.h"

#include <algorithm>

#include "platform/text_scan.h"

namespace valku {

namespace {

constexpr Network ownNetworks[] = {
    {0x7f000000, 0xff000000},  // 127.0.0.0/8, this machine
    {0x0a000000, 0xff000000},  // 10.0.0.0/8
    {0xac100000, 0xfff00000},  // 172.16.0.0/12
    {0xc0a80000, 0xffff0000},  // 192.168.0.0/16
    {0xa9fe0000, 0xffff0000},  // 169.254.0.0/16, cables without any set-up
};

constexpr bool contains(const Network& network, u32 address) {
    return ((network.address ^ address) & network.mask) == 0;
}

std::optional<u32> takeNumberUpTo(std::string_view& text, u32 largest) {
    const std::optional<u32> number = takeNumber<u32>(text);
    return number && *number <= largest ? number : std::nullopt;
}

std::optional<u32> takeAddress(std::string_view& text) {
    u32 address = 0;
    for (int part = 0; part < 4; ++part) {
        if (part > 0 && !takeMark(text, '.')) return {};
        const std::optional<u32> number = takeNumberUpTo(text, 255);
        if (!number) return {};
        address = address << 8 | *number;
    }
    return address;
}

constexpr u32 maskOf(u32 bits) {
    return bits == 0 ? 0 : ~u32{0} << (32 - bits);
}

}  // namespace

std::optional<Network> parseNetwork(std::string_view text) {
    const std::optional<u32> address = takeAddress(text);
    if (!address) return {};
    const std::optional<u32> bits = takeMark(text, '/') ? takeNumberUpTo(text, 32) : 32;
    if (!bits || !text.empty()) return {};
    return Network{*address, maskOf(*bits)};
}

std::optional<std::vector<Network>> parseNetworks(std::string_view text) {
    const auto isSeparator = [](char c) { return c == ',' || c == ' ' || c == '\t'; };
    std::vector<Network> networks;
    for (;;) {
        const std::string_view word = takeWord(text, isSeparator);
        if (word.empty()) return networks;
        const std::optional<Network> network = parseNetwork(word);
        if (!network) return {};
        networks.push_back(*network);
    }
}

bool mayCall(std::string_view address, const std::vector<Network>& others) {
    const std::optional<u32> caller = takeAddress(address);
    if (!caller || !address.empty()) return false;
    const auto isIn = [&](const Network& network) { return contains(network, *caller); };
    return std::ranges::any_of(ownNetworks, isIn) || std::ranges::any_of(others, isIn);
}

}  // namespace valku
