#pragma once

namespace valku {

// An operating-system thread. It is detached and never joined; it ends when `run` returns or the process
// ends. The object must outlive its thread.
class Thread {
  public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    virtual ~Thread();

    // The body of the thread.
    virtual void run() = 0;

    // Starts a thread that calls `run`, with a stack of 8 MiB, or of 1 MiB if the system refuses that. `run`
    // is a virtual call at that moment: a constructor may start the thread only in the most derived class, as
    // its last statement. If the system gives no thread, the process ends with status 1 after one line on
    // standard error.
    void start();

    // The same, but returns false if the system gives no thread.
    bool tryStart();
};

}  // namespace valku
