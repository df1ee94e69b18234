#include "distributed/remote_client.h"

#include <algorithm>

#include "distributed/diagnostics.h"
#include "platform/clock.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

constexpr int mostAttempts = 30;

// A peer that is there answers or refuses at once. A machine that is silent must not delay the engine's start
// for thirty times the system's own patience.
constexpr double patienceSeconds = 5;
constexpr u32 attemptMs = 2000;

// Tells the output that the system's sockets are ready, or the diagnostic file why they are not.
void startWinsock() {
    if (const int error = startSockets()) {
        appendDiagnostic(startErrors, startFailure + std::to_string(error));
    } else {
        sendText("Winsock gestartet!\n");
    }
}

// Connects within `patienceMs`. Empty on success; otherwise what went wrong, for the diagnostic file.
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

}  // namespace

RemoteClientSearchProcess::RemoteClientSearchProcess(const std::string& host, u16 port)
    : AbstractClientSearchProcess(ProcessKind::remoteClient), peerHost(host), peerPort(port) {
    startWinsock();
    inError = !connect();
    if (!inError) startThread();
}

bool RemoteClientSearchProcess::connect() {
    const std::string address = resolveHost(peerHost);
    if (address.empty()) {
        appendDiagnostic(startErrors, "Host konnte nicht aufgeloest werden!");
        return false;
    }
    const double end = steadySeconds() + patienceSeconds;
    for (int attempt = 0; attempt < mostAttempts; ++attempt, ++peerPort) {
        const double left = end - steadySeconds();
        if (left <= 0) return false;
        const u32 patienceMs = std::min(attemptMs, static_cast<u32>(left * 1000) + 1);
        const std::string failure = connectSocket(socket, address, peerPort, patienceMs);
        if (failure.empty()) return true;
        appendDiagnostic(startErrors, failure + " RCSP() could not connect to port " +
                                          std::to_string(peerPort) + ", retval = 1");
    }
    return false;
}

std::string RemoteClientSearchProcess::name() const {
    return "remoteClient on " + peerHost + ":" + std::to_string(peerPort);
}

i32 RemoteClientSearchProcess::readData() {
    if (!socket.hasInput(readPatienceMs)) return 0;
    const auto count = static_cast<i32>(socket.receive(readBuffer.data(), readBuffer.size()));
    return count > 0 ? count : -1;
}

void RemoteClientSearchProcess::writeData(std::string_view text) {
    if (socket.send(text, writePatienceMs) != 0) socket.shutDown();
}

}  // namespace valku
