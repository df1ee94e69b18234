#pragma once

#include <array>
#include <string>
#include <string_view>

#include "chess/types.h"
#include "platform/socket.h"

namespace valku {

// The road by which a parent on another machine reaches this process: one caller for the whole life of the
// process.
class PeerConnection {
  public:
    // Takes `port`, or the next one above it that is free, and waits for the caller. False if there is no
    // such port.
    bool awaitCaller(u16 port);

    bool isOpen() const { return connection.isConnected(); }

    // The next line, without its end, which is a line feed or a carriage return. False when the caller has
    // gone. What is longer than the buffer loses its first part, with a warning.
    bool readLine(std::string& line);

    // A caller that is gone is passed over.
    void send(std::string_view text) { connection.send(text); }

  private:
    bool takeLine(std::string& line);
    bool receive();

    Socket listener;
    Socket connection;
    std::array<char, 32768> buffer;
    std::size_t position = 0;
    std::size_t end = 0;
};

}  // namespace valku
