#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chess/types.h"
#include "platform/socket.h"

// Where a process in a listening role takes its one call, and from whom. Two engines share no secret: whoever
// may call and reaches the port is served. A port that is open to the world by mistake serves nobody outside
// the networks of mayCall.

namespace valku {

// The dotted address on which to listen; empty for all addresses of the machine. Written by the settings,
// read by the main thread.
inline std::string listenAddress;

// Is listenAddress one on which this machine can listen?
bool isListenAddressUsable();

// Lets callers of further networks in; `networks` is the text of a setting. A malformed text lets nobody in,
// which a listening process tells. While the settings are read.
void acceptFrom(std::string_view networks);

// Takes the port and waits for one caller who may call, who is then in `connection`; the listener stays open,
// so that the port is not given to a second engine. 0 on success, -1 on failure, which is in the diagnostic
// file. Each step is told to the process's own output.
int listenAndAccept(Socket& listener, Socket& connection, u16 port);

// Hangs up on everybody who calls from now on. Does not return.
[[noreturn]] void refuseCallers(Socket& listener);

// The IPv4 addresses that agree with `address` in the bits of `mask`.
struct Network {
    u32 address;
    u32 mask;
};

// Networks as in 10.1.2.0/24, or addresses as in 10.1.2.3, which are networks of one; separated by commas,
// blanks or tabs. Nothing if one of them is malformed; there may be none at all.
std::optional<std::vector<Network>> parseNetworks(std::string_view text);

// This machine, the private networks (RFC 1918), link-local addresses (RFC 3927) and `others` may call.
bool mayCall(std::string_view address, const std::vector<Network>& others);

}  // namespace valku
