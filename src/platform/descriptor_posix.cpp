#include "platform/descriptor_posix.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace valku {

namespace {

// After a failed call: true if it should be tried again. A chess interface can start us with non-blocking
// pipes; then this waits until the descriptor is ready.
bool mayTryAgain(int descriptor, short event) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
    pollfd waiting{descriptor, event, 0};
    return poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

std::size_t readDescriptor(int descriptor, char* to, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(descriptor, to, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (!mayTryAgain(descriptor, POLLIN)) return 0;
    }
}

bool writeDescriptor(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (!mayTryAgain(descriptor, POLLOUT)) {
            return false;
        }
    }
    return true;
}

bool writeDescriptor(int descriptor, std::string_view text, int milliseconds) {
    while (!text.empty()) {
        // A pipe that is ready for writing takes PIPE_BUF bytes without blocking.
        const std::string_view piece = text.substr(0, PIPE_BUF);
        if (!awaitEvent(descriptor, POLLOUT, milliseconds) || !writeDescriptor(descriptor, piece))
            return false;
        text.remove_prefix(piece.size());
    }
    return true;
}

bool awaitEvent(int descriptor, short event, int milliseconds) {
    pollfd waiting{descriptor, event, 0};
    int found = 0;
    do {
        found = poll(&waiting, 1, milliseconds);
    } while (found < 0 && errno == EINTR);
    return found != 0;
}

}  // namespace valku
