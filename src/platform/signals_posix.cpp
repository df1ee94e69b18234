#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>

#include "platform/process.h"
#include "platform/shared_memory.h"
#include "platform/signals.h"
#include "platform/thread.h"

namespace valku {

namespace {

struct SignalNumber {
    int system;
    ConsoleSignal console;
};

constexpr std::array<SignalNumber, 4> signalNumbers{{
    {SIGINT, consoleInterrupt},
    {SIGQUIT, consoleBreak},
    {SIGHUP, consoleClosed},
    {SIGTERM, consoleShutdown},
}};

ConsoleSignal consoleNumber(int system) {
    for (const SignalNumber& number : signalNumbers) {
        if (number.system == system) return number.console;
    }
    return consoleShutdown;
}

// Waits for the signals of `set`, one at a time. They are blocked in every thread, so the handler runs as
// ordinary code and may lock and write.
class SignalThread final : public Thread {
  public:
    void run() override {
        for (;;) {
            int system = 0;
            if (sigwait(&set, &system) != 0) continue;
            const ConsoleSignal number = consoleNumber(system);
            handler(number);
            if (number != consoleBreak) endAsBy(system);
        }
    }

    sigset_t set{};
    void (*handler)(int) = nullptr;

  private:
    [[noreturn]] static void endAsBy(int system) {
        SharedMemory::removeOwn();
        struct sigaction action {};
        action.sa_handler = SIG_DFL;
        sigaction(system, &action, nullptr);
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, system);
        pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
        raise(system);
        // Only the first process of a container gets here: its default action for signals is to ignore them.
        exitProcess(128 + system);
    }
};

void ignore(int system) {
    struct sigaction action {};
    action.sa_handler = SIG_IGN;
    sigaction(system, &action, nullptr);
}

bool isIgnored(int system) {
    struct sigaction current {};
    return sigaction(system, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

}  // namespace

void installConsoleSignalHandler(void (*handler)(int consoleSignal)) {
    static SignalThread thread;
    thread.handler = handler;
    sigemptyset(&thread.set);
    for (const SignalNumber& number : signalNumbers) {
        if (!isIgnored(number.system)) sigaddset(&thread.set, number.system);
    }
    pthread_sigmask(SIG_BLOCK, &thread.set, nullptr);
    thread.start();
}

void ignoreBrokenPipes() {
    ignore(SIGPIPE);
}

void ignoreFileSizeLimit() {
    ignore(SIGXFSZ);
}

}  // namespace valku
