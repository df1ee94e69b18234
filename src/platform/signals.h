#pragma once

namespace valku {

// The signals of a console, by the numbers that a handler gets.
enum ConsoleSignal : int {
    consoleInterrupt = 0,  // the interrupt key (Ctrl-C)
    consoleBreak = 1,      // the break key (Ctrl-\ on a terminal)
    consoleClosed = 2,     // the terminal was closed
    consoleShutdown = 6,   // the system asks the process to end
};

// Calls `handler` for every console signal from now on, on a thread of its own, so that it may lock, write
// and wait. After a return from `consoleBreak` the process goes on; after any other signal it ends as if
// there had been no handler. A signal that was ignored when the process started stays ignored (a background
// job, a session kept after the terminal closed). To be called once, before any other thread is started:
// later threads inherit the signal mask, so that only the handler's thread receives these signals.
void installConsoleSignalHandler(void (*handler)(int consoleSignal));

// Writing to a pipe or connection without a reader becomes an error of that write instead of the end of the
// process. The functions of this folder call it themselves; may be called any number of times.
void ignoreBrokenPipes();

// Writing beyond the file size limit of the process becomes an error of that write instead of the end of the
// process.
void ignoreFileSizeLimit();

}  // namespace valku
