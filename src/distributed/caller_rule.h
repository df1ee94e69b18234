#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "chess/types.h"

// From where a listening process takes calls. A port that the whole world reaches by mistake is not to serve
// the whole world.

namespace valku {

// The IPv4 addresses that agree with `address` in the bits of `mask`.
struct Network {
    u32 address;
    u32 mask;
};

// An address as in 10.1.2.3, which is a network of its own, or a network as in 10.1.2.0/24. Nothing if the
// text is neither.
std::optional<Network> parseNetwork(std::string_view text);

// Networks separated by commas or blanks. Nothing if one of them is malformed; there may be none at all.
std::optional<std::vector<Network>> parseNetworks(std::string_view text);

// This machine and the private networks may call, and whoever is in one of `others`.
bool mayCall(std::string_view address, const std::vector<Network>& others);

}  // namespace valku
