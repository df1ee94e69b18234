#include "distributed/remote_client.h"

#include <algorithm>

#include "distributed/diagnostics.h"
#include "distributed/peer_socket.h"
#include "platform/clock.h"

namespace valku {

namespace {

constexpr int mostAttempts = 30;

// A peer that is there answers or refuses at once. A machine that keeps silent must not hold the engine's
// start up for thirty times the system's own patience.
constexpr double patienceSeconds = 5;
constexpr u32 attemptMs = 2000;

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
        const std::string fault = connectSocket(socket, address, peerPort, patienceMs);
        if (fault.empty()) return true;
        appendDiagnostic(startErrors, fault + " RCSP() could not connect to port " +
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
