#pragma once

namespace valku {

/// What the console or the system can tell a process, by the numbers that a handler gets.
enum ConsoleSignal : int {
    consoleInterrupt = 0,  ///< the interrupt key (Ctrl-C)
    consoleBreak = 1,      ///< the break key (Ctrl-\ on a terminal)
    consoleClosed = 2,     ///< the terminal has gone away
    consoleShutdown = 6,   ///< the system asks the process to end
};

/// Has `handler` called for every console signal from now on, on a thread of its own, so that it may lock,
/// write and wait. After a return from `consoleBreak` the process goes on; after any other the system ends it
/// as if there had been no handler. A signal that the process was started to ignore stays ignored, and no
/// handler is called for it (a background job, a session kept after the terminal closed). To be called once,
/// before any other thread is started: later threads then leave these signals to the handler's thread.
void installConsoleSignalHandler(void (*handler)(int consoleSignal));

/// Writing to a pipe or connection that nobody reads becomes an error of that write instead of the end of the
/// process. The routines of this folder see to it themselves; may be called any number of times.
void ignoreBrokenPipes();

/// A file that has reached the size which the process may write then fails a write instead of ending the
/// process.
void ignoreFileSizeLimit();

}  // namespace valku
