#include "distributed/caller_rule.h"

#include <algorithm>
#include <charconv>

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

// A number up to `largest` at the start of the text, which is moved on behind it.
std::optional<u32> takeNumber(std::string_view& text, u32 largest) {
    u32 number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number > largest) return {};
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

bool takeMark(std::string_view& text, char mark) {
    if (!text.starts_with(mark)) return false;
    text.remove_prefix(1);
    return true;
}

std::optional<u32> takeAddress(std::string_view& text) {
    u32 address = 0;
    for (int part = 0; part < 4; ++part) {
        if (part > 0 && !takeMark(text, '.')) return {};
        const std::optional<u32> number = takeNumber(text, 255);
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
    const std::optional<u32> bits = takeMark(text, '/') ? takeNumber(text, 32) : 32;
    if (!bits || !text.empty()) return {};
    return Network{*address, maskOf(*bits)};
}

std::optional<std::vector<Network>> parseNetworks(std::string_view text) {
    constexpr std::string_view separators = ", \t";
    std::vector<Network> networks;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
        if (text.empty()) return networks;
        const std::string_view word = text.substr(0, text.find_first_of(separators));
        const std::optional<Network> network = parseNetwork(word);
        if (!network) return {};
        networks.push_back(*network);
        text.remove_prefix(word.size());
    }
}

bool mayCall(std::string_view address, const std::vector<Network>& others) {
    const std::optional<u32> caller = takeAddress(address);
    if (!caller || !address.empty()) return false;
    const auto isIn = [&](const Network& network) { return contains(network, *caller); };
    return std::ranges::any_of(ownNetworks, isIn) || std::ranges::any_of(others, isIn);
}

}  // namespace valku
