#include "distributed/peer_socket.h"

#include <optional>
#include <vector>

#include "distributed/caller_rule.h"
#include "distributed/diagnostics.h"
#include "distributed/process_role.h"
#include "platform/clock.h"
#include "platform/text_sink.h"

namespace valku {

std::string listenAddress;

namespace {

constexpr const char* startFailure = "Fehler: startWinsock, Fehlercode: ";
constexpr const char* createFailure = "Fehler: Der Socket konnte nicht erstellt werden!";
constexpr const char* keepAliveFailure = "Couldn't setsockopt(SO_KEEPALIVE)";
constexpr const char* noDelayFailure = "Couldn't setsockopt(TCP_NODELAY)";

std::vector<Network> furtherNetworks;  // written while the settings are read

int refuse(const std::string& text) {
    appendDiagnostic(startErrors, text);
    return -1;
}

int refuse(const char* text, int error) {
    return refuse(std::string(text) + "Fehlercode: " + std::to_string(error));
}

// Told once: a stranger may call again and again.
void tellOfStranger(const std::string& address) {
    static bool told = false;
    if (!told) textSink->status("Refused a caller from " + address + ", who is not in acceptFrom\n");
    told = true;
}

// A caller whose machine has lost its power or its cable does not hang up.
void watchForSilence(Socket& connection) {
    if (connection.setKeepAlive(30, 10, 3)) appendDiagnostic(startErrors, keepAliveFailure);
}

int acceptCaller(Socket& listener, Socket& connection) {
    for (;;) {
        if (const int error = listener.accept(connection)) return error;
        const std::string address = connection.remoteAddress();
        if (mayCall(address, furtherNetworks)) return 0;
        connection.close();
        tellOfStranger(address);
    }
}

}  // namespace

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

int startWinsock() {
    const int error = startSockets();
    if (error == 0) {
        sendText("Winsock gestartet!\n");
    } else {
        appendDiagnostic(startErrors, startFailure + std::to_string(error));
    }
    return error;
}

std::string connectSocket(Socket& socket, const std::string& address, u16 port, u32 patienceMs) {
    const auto failure = [](const char* text, int error) {
        return std::string(text) + " Fehlercode: " + std::to_string(error);
    };
    startWinsock();
    if (const int error = socket.create()) return failure(createFailure, error);
    sendText("Socket erstellt!\n");
    if (const int error = socket.connect(address, port, patienceMs)) {
        socket.close();
        return failure("Fehler: connect() gescheitert!", error);
    }
    if (socket.setNoDelay()) {
        socket.close();
        return noDelayFailure;
    }
    sendText("Verbunden mit " + address + "...\n");
    return {};
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
    constexpr u32 pauseMs = 100;  // for a system that is short of something
    for (;;) {
        Socket caller;
        if (listener.accept(caller) != 0) sleepMilliseconds(pauseMs);
    }
}

}  // namespace valku
