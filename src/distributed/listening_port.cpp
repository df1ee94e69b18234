#include "distributed/listening_port.h"

#include <algorithm>

#include "distributed/diagnostics.h"
#include "distributed/process_role.h"
#include "platform/clock.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

constexpr Network ownNetworks[] = {
    {0x7f000000, 0xff000000},  // 127.0.0.0/8, this machine
    {0x0a000000, 0xff000000},  // 10.0.0.0/8
    {0xac100000, 0xfff00000},  // 172.16.0.0/12
    {0xc0a80000, 0xffff0000},  // 192.168.0.0/16
    {0xa9fe0000, 0xffff0000},  // 169.254.0.0/16, link-local
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

std::optional<Network> parseNetwork(std::string_view text) {
    const std::optional<u32> address = takeAddress(text);
    if (!address) return {};
    const std::optional<u32> bits = takeMark(text, '/') ? takeNumberUpTo(text, 32) : 32;
    if (!bits || !text.empty()) return {};
    return Network{*address, maskOf(*bits)};
}

// Of the settings. Written by acceptFrom, read by the main thread while it listens.
std::vector<Network> furtherNetworks;

int refuse(const std::string& text) {
    appendDiagnostic(startErrors, text);
    return -1;
}

int refuse(const char* text, int error) {
    return refuse(std::string(text) + "Fehlercode: " + std::to_string(error));
}

// Once: whoever is refused may call again and again.
void reportRefusedCaller(const std::string& address) {
    static bool told = false;
    if (!told) textSink->status("Refused a caller from " + address + ", who is not in acceptFrom\n");
    told = true;
}

// A caller whose machine has lost its power or its cable does not hang up.
void watchForSilence(Socket& connection) {
    if (connection.setKeepAlive(30, 10, 3))
        appendDiagnostic(startErrors, "Couldn't setsockopt(SO_KEEPALIVE)");
}

int acceptCaller(Socket& listener, Socket& connection) {
    for (;;) {
        if (const int error = listener.accept(connection)) return error;
        const std::string address = connection.remoteAddress();
        if (mayCall(address, furtherNetworks)) return 0;
        connection.close();
        reportRefusedCaller(address);
    }
}

}  // namespace

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

void acceptFrom(std::string_view networks) {
    if (const std::optional<std::vector<Network>> named = parseNetworks(networks)) {
        furtherNetworks.insert(furtherNetworks.end(), named->begin(), named->end());
    } else if (rolePort != 0) {
        textSink->status("Cannot read acceptFrom=" + std::string(networks) + ", which lets nobody in\n");
    }
}

bool isListenAddressUsable() {
    Socket probe;
    return probe.create() == 0 && probe.bind(0, listenAddress) == 0;
}

int listenAndAccept(Socket& listener, Socket& connection, u16 port) {
    constexpr int backlog = 10;
    if (const int error = startSockets()) return refuse(startFailure + std::to_string(error));
    textSink->status("Winsock gestartet!\n");
    if (const int error = listener.create()) return refuse(createFailure, error);
    textSink->status("Socket erstellt!\n");
    if (const int error = listener.setReuseAddress())
        return refuse("Fehler: setsockopt - SO_REUSEADDR", error);
    if (const int error = listener.bind(port, listenAddress)) return refuse("Fehler: bind", error);
    textSink->status("Socket an port " + std::to_string(port) + " gebunden\n");
    if (const int error = listener.listen(backlog)) return refuse("Fehler: listen", error);
    textSink->status("acceptSocket ist im listen Modus....\n");
    if (const int error = acceptCaller(listener, connection)) return refuse("Fehler: accept", error);
    if (connection.setNoDelay()) return refuse(noDelayFailure);
    watchForSilence(connection);
    textSink->status("Neue Verbindung wurde akzeptiert!\n");
    return 0;
}

void refuseCallers(Socket& listener) {
    constexpr u32 pauseMs = 100;  // for a system that is short of descriptors or memory
    for (;;) {
        Socket caller;
        if (listener.accept(caller) != 0) sleepMilliseconds(pauseMs);
    }
}

}  // namespace valku
