#pragma once

#include <string>
#include <string_view>

#include "platform/event.h"
#include "platform/mutex.h"
#include "platform/thread.h"

namespace valku {

// Standard output of a process that talks to its caller over TCP: for whoever watches it. Nobody waits for a
// slow reader: a text for which there is no room is dropped whole.
class BackgroundOutput final : public Thread {
  public:
    // Leaves the text to a thread of its own, which is started by the first one, or drops it. Any thread.
    void write(std::string_view text);

    // Waits until everything is written, at most so long.
    void awaitEnd(int milliseconds);

    void run() override;

  private:
    static constexpr std::size_t mostWaiting = 65536;

    Mutex mutex;  // holds for everything below but `wake`
    std::string waiting;
    bool started = false;
    bool writing = false;
    Event wake;
};

}  // namespace valku
