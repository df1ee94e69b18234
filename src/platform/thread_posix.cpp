#include <pthread.h>

#include "platform/process.h"
#include "platform/raw_io.h"
#include "platform/thread.h"

namespace valku {

namespace {

// A split search keeps whole positions on the stack of the searching thread. Some systems default to a few
// hundred kilobytes, so the size is always requested.
constexpr std::size_t stackSize = 8 * 1024 * 1024;
constexpr std::size_t leastStackSize = 1024 * 1024;

void* threadEntry(void* thread) {
    static_cast<Thread*>(thread)->run();
    return nullptr;
}

bool startDetached(Thread* thread, std::size_t stack) {
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0) return false;
    pthread_t handle;
    const bool started = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) == 0 &&
                         pthread_attr_setstacksize(&attributes, stack) == 0 &&
                         pthread_create(&handle, &attributes, threadEntry, thread) == 0;
    pthread_attr_destroy(&attributes);
    return started;
}

}  // namespace

Thread::~Thread() = default;

bool Thread::tryStart() {
    // Where address space is limited, a smaller stack may still be possible.
    return startDetached(this, stackSize) || startDetached(this, leastStackSize);
}

void Thread::start() {
    if (tryStart()) return;
    constexpr int patienceMs = 1000;
    writeErrorOutput("valku: the system gives no further thread\n", patienceMs);
    exitProcess(1);
}

}  // namespace valku
