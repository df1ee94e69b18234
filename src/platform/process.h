#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace valku {

// Flushes the standard streams and ends the process at once with `code`, on any thread. The shared memory
// that it has created is marked for removal. Destructors of static objects do not run: other threads may use
// those objects until the very end.
[[noreturn]] void exitProcess(int code);

// True for a pipe or socket: only there the end of the input means that the process at its other end is gone.
bool standardInputIsPipe();

// True if no process has the writing end of the standard input open any more, though there may still be
// something to read. Never true of a file.
bool standardInputIsOrphaned();

// A path by which this program can be started again from any working directory; `argv0`, the first word of
// the command line, if the system does not know one.
std::string ownProgramPath(const std::string& argv0);

// A child process whose standard input and output are pipes to this process. One thread may read while
// another writes, and any thread may terminate the child; starting and destroying is for one thread alone.
class ChildProcess {
  public:
    ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Kills the child if it still runs, waits for its end and closes the pipes.
    ~ChildProcess();

    // Starts `programPath` with `arguments`; a name without a slash is searched for in PATH. No shell is
    // involved: a path or an argument with blanks arrives as it is. The child's standard error goes to the
    // same pipe as its standard output. The child has a process group of its own, so that an interrupt typed
    // at our terminal does not reach it. May be called once. False if the child could not be started.
    bool start(const std::string& programPath, const std::vector<std::string>& arguments);

    // The same, but the child writes to our standard output instead of a pipe.
    bool startBeside(const std::string& programPath, const std::vector<std::string>& arguments);

    // Waits for the next line of the child's output; `line` is without its line feed. False when the child
    // has closed its output or ended.
    bool readLine(std::string& line);

    // Sends the whole text, waiting while the pipe is full. False if the child no longer reads.
    bool write(std::string_view text);

    // True if a read would return at once, with text or at the end of the output.
    bool hasOutput();

    enum class Output { some, none, ended };

    // For a child that may stop writing, also in the middle of a line: appends what it has written to `text`,
    // one block at most, and waits up to `milliseconds` for that, without limit if negative. Not to be mixed
    // with `readLine`, which reads ahead.
    Output readSome(std::string& text, int milliseconds);

    // `write` for a child that may have stopped reading: false also if it takes nothing for `milliseconds`.
    bool write(std::string_view text, int milliseconds);

    // Gives the child the end of its input.
    void closeInput();

    // Kills the child. Does nothing if it has ended by itself.
    void terminate();

    bool hasEnded();

    // Waits for the child's end. Returns its exit code; 128 plus the signal's number if a signal ended it;
    // -1 if there was no child.
    int wait();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

}  // namespace valku
