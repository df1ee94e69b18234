#include "shell/background_output.h"

#include <mutex>

#include "platform/clock.h"
#include "platform/raw_io.h"

namespace valku {

void BackgroundOutput::write(std::string_view text) {
    {
        const std::lock_guard lock(mutex);
        if (waiting.size() + text.size() > mostWaiting) return;
        waiting += text;
        if (!started) start();
        started = true;
    }
    wake.signal();
}

void BackgroundOutput::awaitEnd(int milliseconds) {
    const auto isDone = [this] {
        const std::lock_guard lock(mutex);
        return waiting.empty() && !writing;
    };
    for (int waited = 0; !isDone() && waited < milliseconds; ++waited) sleepMilliseconds(1);
}

void BackgroundOutput::run() {
    std::string texts;
    for (;;) {
        {
            const std::lock_guard lock(mutex);
            texts.clear();
            texts.swap(waiting);
            writing = !texts.empty();
        }
        if (texts.empty()) {
            wake.wait();
        } else {
            writeStandardOutput(texts);
        }
    }
}

}  // namespace valku
