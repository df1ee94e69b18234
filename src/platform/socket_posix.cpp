#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/signals.h"
#include "platform/socket.h"
#include "platform/thread.h"

namespace valku {

namespace {

int errorOf(int result) {
    return result == 0 ? 0 : errno;
}

sockaddr_in addressOf(in_addr_t host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = host;
    address.sin_port = htons(port);
    return address;
}

int setOption(int handle, int level, int option, int value = 1) {
    return errorOf(setsockopt(handle, level, option, &value, sizeof value));
}

// Waits until `event` happens on the descriptor; a timeout of 0 means no limit. 0 or an error code.
int waitForEvent(int handle, short event, std::uint32_t timeoutMilliseconds) {
    const double end = steadySeconds() + timeoutMilliseconds / 1000.0;
    for (;;) {
        int rest = -1;
        if (timeoutMilliseconds != 0) {
            const double left = (end - steadySeconds()) * 1000.0;
            if (left <= 0) return ETIMEDOUT;
            rest = left < std::numeric_limits<int>::max() ? static_cast<int>(left) + 1
                                                          : std::numeric_limits<int>::max();
        }
        pollfd waiting{handle, event, 0};
        const int count = poll(&waiting, 1, rest);
        if (count > 0) return 0;
        if (count < 0 && errno != EINTR) return errno;
    }
}

}  // namespace

int startSockets() {
    ignoreBrokenPipes();
    return 0;
}

namespace {

// A name lookup on a thread of its own, which the asker abandons if it takes too long; the last of the two
// frees it.
class Lookup final : public Thread, public std::enable_shared_from_this<Lookup> {
  public:
    explicit Lookup(std::string name) : host(std::move(name)) {}

    std::string ask() {
        keptAlive = shared_from_this();
        if (!tryStart()) {
            keptAlive.reset();
            return {};
        }
        if (!done.waitFor(patienceMs)) return {};
        return address;
    }

    void run() override {
        const std::shared_ptr<Lookup> self = std::move(keptAlive);
        address = lookUp(host);
        done.signal();
    }

  private:
    static constexpr std::uint32_t patienceMs = 4000;

    static std::string lookUp(const std::string& host);

    const std::string host;
    std::string address;
    Event done;
    std::shared_ptr<Lookup> keptAlive;
};

std::string textOf(const in_addr& address) {
    std::array<char, INET_ADDRSTRLEN> text{};
    return inet_ntop(AF_INET, &address, text.data(), text.size()) ? text.data() : std::string();
}

std::string Lookup::lookUp(const std::string& host) {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), nullptr, &wanted, &found) != 0) return {};
    std::string address = textOf(reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr);
    freeaddrinfo(found);
    return address;
}

}  // namespace

std::string resolveHost(const std::string& host) {
    return std::make_shared<Lookup>(host)->ask();
}

Socket::Socket(Socket&& other) noexcept {
    *this = std::move(other);
}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
}

Socket::~Socket() {
    close();
}

int Socket::create() {
    close();
    handle = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return handle >= 0 ? 0 : errno;
}

int Socket::setReuseAddress() {
    return setOption(handle, SOL_SOCKET, SO_REUSEADDR);
}

int Socket::setNoDelay() {
    return setOption(handle, IPPROTO_TCP, TCP_NODELAY);
}

int Socket::setKeepAlive(int idleSeconds, int intervalSeconds, int count) {
    const int patienceMs = 1000 * (idleSeconds + intervalSeconds * count);
    if (const int error = setOption(handle, IPPROTO_TCP, TCP_KEEPIDLE, idleSeconds)) return error;
    if (const int error = setOption(handle, IPPROTO_TCP, TCP_KEEPINTVL, intervalSeconds)) return error;
    if (const int error = setOption(handle, IPPROTO_TCP, TCP_KEEPCNT, count)) return error;
    if (const int error = setOption(handle, IPPROTO_TCP, TCP_USER_TIMEOUT, patienceMs)) return error;
    return setOption(handle, SOL_SOCKET, SO_KEEPALIVE);
}

int Socket::bind(std::uint16_t port, const std::string& address) {
    in_addr host{htonl(INADDR_ANY)};
    if (!address.empty() && inet_pton(AF_INET, address.c_str(), &host) != 1) return EINVAL;
    const sockaddr_in place = addressOf(host.s_addr, port);
    return errorOf(::bind(handle, reinterpret_cast<const sockaddr*>(&place), sizeof place));
}

int Socket::listen(int backlog) {
    return errorOf(::listen(handle, backlog));
}

int Socket::accept(Socket& connection) {
    for (;;) {
        const int caller = ::accept4(handle, nullptr, nullptr, SOCK_CLOEXEC);
        if (caller >= 0) {
            connection.close();
            connection.handle = caller;
            return 0;
        }
        // A peer that disconnected before it was accepted is no failure of the listener.
        if (errno != EINTR && errno != ECONNABORTED) return errno;
    }
}

int Socket::connect(const std::string& address, std::uint16_t port, std::uint32_t timeoutMilliseconds) {
    in_addr host{};
    if (inet_pton(AF_INET, address.c_str(), &host) != 1) return EINVAL;
    const sockaddr_in peer = addressOf(host.s_addr, port);

    // An interrupted blocking connect goes on asynchronously, so we wait separately from the call.
    const int flags = fcntl(handle, F_GETFL);
    if (flags < 0 || fcntl(handle, F_SETFL, flags | O_NONBLOCK) != 0) return errno;
    int error = errorOf(::connect(handle, reinterpret_cast<const sockaddr*>(&peer), sizeof peer));
    if (error == EINPROGRESS || error == EINTR) {
        error = waitForEvent(handle, POLLOUT, timeoutMilliseconds);
        socklen_t size = sizeof error;
        if (error == 0 && getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size) != 0) error = errno;
    }
    if (error == 0 && fcntl(handle, F_SETFL, flags) != 0) error = errno;
    return error;
}

int Socket::send(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::send(handle, text.data(), text.size(), MSG_NOSIGNAL);
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int Socket::send(std::string_view text, std::uint32_t milliseconds) {
    const double end = steadySeconds() + milliseconds / 1000.0;
    while (!text.empty()) {
        const ssize_t count = ::send(handle, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        if (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) return errno;
        const double left = (end - steadySeconds()) * 1000.0;
        if (left <= 0) return ETIMEDOUT;
        if (const int error = waitForEvent(handle, POLLOUT, static_cast<std::uint32_t>(left) + 1))
            return error;
    }
    return 0;
}

std::ptrdiff_t Socket::receive(char* to, std::size_t size) {
    for (;;) {
        const ssize_t count = ::recv(handle, to, size, 0);
        if (count >= 0) return count;
        if (errno != EINTR) return -errno;
    }
}

bool Socket::hasInput(int milliseconds) const {
    pollfd waiting{handle, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) > 0;
}

void Socket::shutDown() {
    ::shutdown(handle, SHUT_RDWR);
}

void Socket::close() {
    if (handle >= 0) ::close(handle);
    handle = -1;
}

std::string Socket::remoteAddress() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (getpeername(handle, reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
    return textOf(address.sin_addr);
}

std::uint16_t Socket::localPort() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (getsockname(handle, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
    return ntohs(address.sin_port);
}

}  // namespace valku
