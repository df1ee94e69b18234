#pragma once

#include <array>
#include <string>
#include <string_view>

#include "chess/types.h"
#include "distributed/peer_socket.h"
#include "platform/shared_value.h"
#include "platform/socket.h"
#include "platform/thread.h"

namespace valku {

// The road by which a parent on another machine reaches this process: one caller for the whole life of the
// process.
class PeerConnection {
  public:
    // Takes `port`, or the next one above it that is free, and waits for the caller. From then on everybody
    // else is refused at that port. False if there is no such port. Once.
    bool awaitCaller(u16 port);

    bool isOpen() const { return open; }

    // The next line, without its end, which is a line feed or a carriage return. False when the caller has
    // gone, or sends without ever ending a line. What is longer than the buffer loses its first part, with a
    // warning.
    bool readLine(std::string& line);

    // A caller that is gone is passed over.
    void send(std::string_view text) { connection.send(text); }

  private:
    // Keeps the port taken, but nobody waiting there.
    class Doorkeeper final : public Thread {
      public:
        void run() override { refuseCallers(listener); }

        Socket listener;
    };

    bool takeLine(std::string& line);
    bool receive();

    static constexpr std::size_t longestLine = 65536;

    Doorkeeper doorkeeper;
    Socket connection;
    SharedFlag open{false};  // set by the thread that awaits the caller
    std::array<char, 32768> buffer;
    std::size_t position = 0;
    std::size_t end = 0;
    std::size_t lost = 0;  // what the line that is being received has lost
};

}  // namespace valku
