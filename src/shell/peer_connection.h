#pragma once

#include <array>
#include <string>
#include <string_view>

#include "chess/types.h"
#include "distributed/listening_port.h"
#include "platform/shared_value.h"
#include "platform/socket.h"
#include "platform/thread.h"

namespace valku {

// The connection over which a parent on another machine reaches this process: one caller for the whole life
// of the process. On the thread that reads the commands, unless it says otherwise.
class PeerConnection {
  public:
    // Takes `port`, or the next free one above it, and waits for the caller. From then on everybody else is
    // refused at that port. False if no port is free. Once.
    bool awaitCaller(u16 port);

    // Has there been a caller? Any thread.
    bool isOpen() const { return open; }

    // The next line, without its end, which is a line feed or a carriage return. False when the caller has
    // gone, or sends without ever ending a line. What is longer than the buffer loses its first part, with a
    // warning.
    bool readLine(std::string& line);

    // Does nothing if the caller is gone. Any thread, one at a time.
    void send(std::string_view text) { connection.send(text); }

  private:
    // Keeps the port taken, and hangs up on everybody else.
    class PortGuard final : public Thread {
      public:
        void run() override { refuseCallers(listener); }

        Socket listener;
    };

    bool takeLine(std::string& line);
    bool receive();

    static constexpr std::size_t longestLine = 65536;

    PortGuard portGuard;
    Socket connection;
    SharedFlag open{false};  // set by awaitCaller, read by any thread
    std::array<char, 32768> buffer;
    std::size_t position = 0;  // of the first byte that no line has taken yet
    std::size_t end = 0;       // of the bytes received
    std::size_t lost = 0;      // how many bytes the line that is being received has lost
};

}  // namespace valku
