#pragma once

#include <string>
#include <string_view>

#include "platform/event.h"
#include "platform/mutex.h"
#include "platform/thread.h"

namespace valku {

// Standard output for those who look on, while the conversation itself goes elsewhere. Nobody is ever made to
// wait for them: what they do not read is dropped, text by text.
class Onlookers final : public Thread {
  public:
    // Leaves the text to a thread of its own, or drops it.
    void tell(std::string_view text);

    // Waits until everything told is written, but not for longer.
    void awaitEnd(int milliseconds);

    void run() override;

  private:
    static constexpr std::size_t mostWaiting = 65536;

    Mutex mutex;  // holds for everything below
    std::string waiting;
    bool started = false;
    bool writing = false;
    Event wake;
};

}  // namespace valku
