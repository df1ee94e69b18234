#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace valku {

/// Flushes the standard streams and ends the process at once, with `code`. The names of the shared blocks
/// that it has created go with it. Destructors of static objects do not run: other threads may be at work on
/// those objects until the very end.
[[noreturn]] void exitProcess(int code);

std::int64_t currentProcessId();

/// False for a terminal, a file, or nothing at all: only a pipe's end tells that whoever held it is gone.
bool standardInputIsPipe();

/// True if nobody is left who could write to the standard input, though there may still be something to read.
/// Never true of a file.
bool standardInputIsOrphaned();

/// A path by which this program can be started again from any working directory. `argv0` is the first word of
/// the command line, the answer where the system cannot tell.
std::string ownProgramPath(const std::string& argv0);

/// A child process whose standard input and output are pipes to this process. One thread may read, another
/// write, and any thread may end the child meanwhile; starting and destroying is for one thread alone.
class ChildProcess {
  public:
    ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Ends a child that is still there the rough way and closes the pipes.
    ~ChildProcess();

    /// Starts `programPath` with `arguments`; a name without a slash is looked for where the system keeps its
    /// programs. No shell is involved: a path or an argument with blanks arrives as it is. The child's
    /// standard error goes the way of its standard output. The child lives outside this process's console, so
    /// an interrupt typed there does not reach it. May be called once. False if the child could not be
    /// started.
    bool start(const std::string& programPath, const std::vector<std::string>& arguments);

    /// The same, but the child writes where this process writes instead of to a pipe.
    bool startBeside(const std::string& programPath, const std::vector<std::string>& arguments);

    /// Waits for the next line of the child's output and gives it without its line feed. False when the child
    /// has closed its output, as it does by ending.
    bool readLine(std::string& line);

    /// Sends the whole text, waiting while the pipe is full. False if the child no longer reads.
    bool write(std::string_view text);

    /// Would a read come back at once, with text or with the news of the end?
    bool hasOutput();

    enum class Output { some, none, ended };

    /// For a child that may fall silent, also in the middle of a line: appends what it has written to `text`,
    /// a block at the most, and waits up to `milliseconds` for that, for ever if it is negative. Not to be
    /// mixed with `readLine`, which reads ahead.
    Output readSome(std::string& text, int milliseconds);

    /// `write` for a child that may read no more: false also if it has taken nothing for `milliseconds`.
    bool write(std::string_view text, int milliseconds);

    /// The child sees the end of its input.
    void closeInput();

    /// Ends the child the rough way. Does nothing if it has ended by itself.
    void terminate();

    bool hasEnded();

    /// Waits for the child's end. Returns its exit code; 128 plus the signal's number if a signal ended it;
    /// -1 if there was no child.
    int wait();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

}  // namespace valku
