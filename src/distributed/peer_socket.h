#pragma once

#include <string>
#include <string_view>

#include "chess/types.h"
#include "platform/socket.h"

// How two engines find each other over TCP: one listens, the other calls. There is no secret between them;
// whoever reaches the port from a network that may call is served.

namespace valku {

// Where a listening role takes its calls: a dotted address, or empty for all addresses of the machine.
extern std::string listenAddress;

// Is listenAddress one on which this machine can listen?
bool isListenAddressUsable();

// Lets callers of further networks in; `networks` is the text of a setting. One that is malformed lets nobody
// in, which a listening process tells. While the settings are read.
void acceptFrom(std::string_view networks);

// 0 or an error code. Tells the output that the sockets are ready.
int startWinsock();

// Connects within `patienceMs`. Empty on success; otherwise what went wrong, for the diagnostic file.
std::string connectSocket(Socket& socket, const std::string& address, u16 port, u32 patienceMs);

// Takes the port and waits for one caller who may call, who is then in `connection`; the listener stays open,
// so that the port is not given to a second engine. 0 on success, -1 on failure, which is in the diagnostic
// file. What is done is told to the process's own output.
int listenAndAccept(Socket& listener, Socket& connection, u16 port);

// Hangs up on everybody who calls from now on. Does not return.
[[noreturn]] void refuseCallers(Socket& listener);

}  // namespace valku
