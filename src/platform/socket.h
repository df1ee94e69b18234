#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace valku {

/// Makes the system's sockets ready for use; may be called any number of times. 0 or an error code.
int startSockets();

/// The first IPv4 address of `host`, a name or a dotted address, as dotted text. Empty if there is none, or
/// if those who know do not answer within a few seconds.
std::string resolveHost(const std::string& host);

/// One TCP socket, listening or connected. Operations that return an int give 0 or the system's error code.
/// One thread may receive while another sends.
class Socket {
  public:
    Socket() = default;
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket();

    /// Makes the socket; what it held before is closed.
    int create();

    /// Lets a listener take a port that an earlier connection has not quite left. Before `bind`.
    int setReuseAddress();

    /// Takes `port`; port 0 takes any free one. On the dotted `address` of this machine, or on all of them if
    /// it is empty.
    int bind(std::uint16_t port, const std::string& address = {});

    int listen(int backlog);

    /// Waits for a caller and gives the connection to `connection`, which may be this very socket: the
    /// listener is then closed.
    int accept(Socket& connection);

    /// Connects to a dotted address. Gives up after `timeoutMilliseconds`, or after the system's own patience
    /// if that is 0.
    int connect(const std::string& address, std::uint16_t port, std::uint32_t timeoutMilliseconds = 0);

    /// Small texts leave at once instead of being gathered into larger packets.
    int setNoDelay();

    /// Lets the system find out whether the other side is still there: it is asked after `idleSeconds` of
    /// silence, then every `intervalSeconds`, and gone after `count` questions without an answer, or when a
    /// text has found no way to it for as long as all that takes.
    int setKeepAlive(int idleSeconds, int intervalSeconds, int count);

    /// Sends the whole text, waiting while the connection is full.
    int send(std::string_view text);

    /// `send` to a peer that may read no more: an error too if it has not taken all of it in `milliseconds`.
    int send(std::string_view text, std::uint32_t milliseconds);

    /// Waits for bytes and puts at most `size` of them at `to`. Returns their number, 0 when the other side
    /// has closed, and the negative error code after a failure.
    std::ptrdiff_t receive(char* to, std::size_t size);

    /// Would `receive` come back at once, with bytes or with the news of the end? Waits up to `milliseconds`
    /// for that.
    bool hasInput(int milliseconds = 0) const;

    /// Ends the conversation in both directions; a `receive` or `accept` that waits in another thread
    /// returns.
    void shutDown();

    void close();

    bool isConnected() const { return connected; }

    /// The dotted address of the other side, empty if it has gone.
    std::string remoteAddress() const;

    /// The port of this side, 0 if there is none yet.
    std::uint16_t localPort() const;

  private:
    int handle = -1;
    bool connected = false;
};

}  // namespace valku
