#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace valku {

// To be called before any other use of sockets, any number of times. 0 or an error code.
int startSockets();

// The first IPv4 address of `host`, a name or a dotted address, as dotted text. Empty if there is none, or if
// the name service does not answer within four seconds.
std::string resolveHost(const std::string& host);

// One TCP socket, listening or connected. Operations that return an int give 0 or the system's error code.
// One thread may receive while another sends.
class Socket {
  public:
    Socket() = default;
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket();

    // Makes a TCP socket; the one it held before is closed.
    int create();

    // Lets a listener take a port on which closed connections still linger. Before `bind`.
    int setReuseAddress();

    // Takes `port`, or any free one for 0, on the dotted `address` of this machine, or on all addresses if it
    // is empty.
    int bind(std::uint16_t port, const std::string& address = {});

    int listen(int backlog);

    // Waits for a connection and puts it into `connection`, which may be this socket: the listener is then
    // closed.
    int accept(Socket& connection);

    // Connects to a dotted address. Gives up after `timeoutMilliseconds`, or after the system's own limit if
    // that is 0.
    int connect(const std::string& address, std::uint16_t port, std::uint32_t timeoutMilliseconds = 0);

    // Small texts are sent at once instead of being gathered into larger packets (Nagle's algorithm off).
    int setNoDelay();

    // Lets the system probe whether the other side is still there: after `idleSeconds` of silence, then every
    // `intervalSeconds`. The connection fails after `count` probes without an answer, or when sent bytes stay
    // unacknowledged for as long as all that takes.
    int setKeepAlive(int idleSeconds, int intervalSeconds, int count);

    // Sends the whole text; waits while the connection's buffers are full.
    int send(std::string_view text);

    // `send` to a peer that may have stopped reading: also fails if it has not taken all of it in
    // `milliseconds`.
    int send(std::string_view text, std::uint32_t milliseconds);

    // Waits for bytes and puts at most `size` of them at `to`. Returns their number, 0 when the other side
    // has closed, and the negative error code after a failure.
    std::ptrdiff_t receive(char* to, std::size_t size);

    // True if `receive` would return at once, with bytes or at the end. Waits up to `milliseconds` for that.
    bool hasInput(int milliseconds = 0) const;

    // Shuts both directions down; a `receive` or `accept` that waits in another thread returns.
    void shutDown();

    void close();

    // The dotted address of the other side, empty if it is gone.
    std::string remoteAddress() const;

    // The port of this side, 0 if there is none yet.
    std::uint16_t localPort() const;

  private:
    int handle = -1;
};

}  // namespace valku
