#include "shell/peer_connection.h"

#include <algorithm>
#include <limits>

#include "distributed/diagnostics.h"
#include "platform/text_sink.h"

namespace valku {

bool PeerConnection::awaitCaller(u16 port) {
    while (listenAndAccept(portGuard.listener, connection, port) != 0) {
        appendDiagnostic(startErrors, "CC: could not listen on port " + std::to_string(port));
        if (port == std::numeric_limits<u16>::max()) return false;
        ++port;
    }
    open = true;
    textSink->status("Socket created on port " + std::to_string(port) + "!\n");
    portGuard.start();
    return true;
}

bool PeerConnection::readLine(std::string& line) {
    for (lost = 0;;) {
        const bool isWhole = takeLine(line);
        if (lost + (isWhole ? line.size() : end - position) > longestLine) break;
        if (isWhole) return true;
        if (!receive()) return false;
    }
    textSink->status("The caller sends a line without an end, and is left.\n");
    return false;
}

bool PeerConnection::takeLine(std::string& line) {
    const auto from = buffer.begin() + static_cast<std::ptrdiff_t>(position);
    const auto to = buffer.begin() + static_cast<std::ptrdiff_t>(end);
    const auto lineEnd = std::find_if(from, to, [](char c) { return c == '\n' || c == '\r'; });
    if (lineEnd == to) return false;
    line.assign(from, lineEnd);
    position += line.size() + 1;
    return true;
}

// Appends to the piece of a line that is there already: the network cuts lines anywhere.
bool PeerConnection::receive() {
    std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(position),
              buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.begin());
    end -= position;
    position = 0;
    if (end == buffer.size()) {
        textSink->status("ConsoleCommunicator::getLine(): Warning: buffer overrun detected!\n");
        lost += end;
        end = 0;
    }
    const std::ptrdiff_t count = connection.receive(buffer.data() + end, buffer.size() - end);
    if (count <= 0) return false;
    end += static_cast<std::size_t>(count);
    return true;
}

}  // namespace valku
