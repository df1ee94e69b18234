#pragma once

namespace valku {

/// One activity with an operating-system thread of its own. No handle is kept: the thread is detached, nobody
/// joins it, and it ends when `run` returns or the process ends. The object must outlive its thread.
class Thread {
  public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;
    virtual ~Thread();

    /// The body of the thread.
    virtual void run() = 0;

    /// Starts a thread that calls `run`, with a stack of 8 MiB. `run` is called as the object stands at that
    /// moment: whoever starts a thread from a constructor does it in the most derived class, as its last act.
    /// A process that cannot get the thread ends with status 1 after one line on standard error.
    void start();

    /// The same, but false, and no thread, if there is none to be had.
    bool tryStart();
};

}  // namespace valku
