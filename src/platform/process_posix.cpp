#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <mutex>

#include "platform/descriptor_posix.h"
#include "platform/process.h"
#include "platform/shared_memory.h"
#include "platform/signals.h"

namespace valku {

void exitProcess(int code) {
    SharedMemory::removeOwn();
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    std::fflush(stderr);
    _exit(code);
}

bool standardInputIsOrphaned() {
    pollfd input{STDIN_FILENO, 0, 0};
    return poll(&input, 1, 0) > 0;
}

bool standardInputIsPipe() {
    struct stat state {};
    return fstat(STDIN_FILENO, &state) == 0 && (S_ISFIFO(state.st_mode) || S_ISSOCK(state.st_mode));
}

std::string ownProgramPath(const std::string& argv0) {
    std::error_code failure;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", failure);
    // If the program file was replaced since the start, the link names a file that does not exist.
    if (failure || !std::filesystem::exists(path, failure)) return argv0;
    return path.string();
}

namespace {

// A descriptor of this process that no child inherits by accident.
class Descriptor {
  public:
    Descriptor() = default;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(); }

    void reset(int newValue = -1) {
        if (value >= 0) ::close(value);
        value = newValue;
    }

    int get() const { return value; }

  private:
    int value = -1;
};

// Moves a descriptor away from 0, 1 and 2: a process that was started without standard streams gets those
// numbers for its pipes, and duplicating the child's ends onto them would close the pipes.
int awayFromStandardStreams(int descriptor) {
    if (descriptor > STDERR_FILENO) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(descriptor);
    return moved;
}

bool makePipe(Descriptor& readEnd, Descriptor& writeEnd) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
    readEnd.reset(awayFromStandardStreams(ends[0]));
    writeEnd.reset(awayFromStandardStreams(ends[1]));
    return readEnd.get() >= 0 && writeEnd.get() >= 0;
}

// Starts the program with its three standard streams on the given descriptors. 0 on failure.
pid_t spawn(const std::string& programPath, const std::vector<std::string>& arguments, int input,
            int output) {
    std::vector<char*> words;
    words.push_back(const_cast<char*>(programPath.c_str()));
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);

    // The child starts with default signal handling, and in a process group of its own, out of reach of our
    // terminal's keys.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    sigset_t ignoredHere;
    sigemptyset(&ignoredHere);
    sigaddset(&ignoredHere, SIGPIPE);
    sigaddset(&ignoredHere, SIGXFSZ);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &ignoredHere);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

    pid_t child = 0;
    if (posix_spawnp(&child, programPath.c_str(), &files, &attributes, words.data(), environ) != 0) child = 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return child;
}

}  // namespace

struct ChildProcess::Impl {
    // Collects the exit code if the child has ended; with `mutex` held. True if it has.
    bool collect() {
        if (process == 0 || collected) return true;
        int status = 0;
        const pid_t answer = waitpid(process, &status, WNOHANG);
        if (answer == 0 || (answer < 0 && errno == EINTR)) return false;
        collected = true;
        if (answer > 0) exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        return true;
    }

    Descriptor fromChild;
    Descriptor toChild;
    DescriptorSource source;
    LineReader reader{source};

    // The id of a collected child may already belong to another process, so collecting and killing exclude
    // each other.
    std::mutex mutex;
    pid_t process = 0;
    bool collected = false;
    int exitCode = -1;
};

ChildProcess::ChildProcess() : impl(std::make_unique<Impl>()) {}

ChildProcess::~ChildProcess() {
    terminate();
    wait();
}

bool ChildProcess::start(const std::string& programPath, const std::vector<std::string>& arguments) {
    if (impl->process != 0) return false;
    ignoreBrokenPipes();
    Descriptor childInput;
    Descriptor childOutput;
    if (!makePipe(impl->fromChild, childOutput) || !makePipe(childInput, impl->toChild)) return false;
    impl->source.descriptor = impl->fromChild.get();
    impl->process = spawn(programPath, arguments, childInput.get(), childOutput.get());
    return impl->process != 0;
}

bool ChildProcess::startBeside(const std::string& programPath, const std::vector<std::string>& arguments) {
    if (impl->process != 0) return false;
    ignoreBrokenPipes();
    Descriptor childInput;
    if (!makePipe(childInput, impl->toChild)) return false;
    impl->process = spawn(programPath, arguments, childInput.get(), STDOUT_FILENO);
    return impl->process != 0;
}

bool ChildProcess::readLine(std::string& line) {
    return impl->reader.readLine(line);
}

bool ChildProcess::write(std::string_view text) {
    return writeDescriptor(impl->toChild.get(), text);
}

bool ChildProcess::hasOutput() {
    return awaitEvent(impl->fromChild.get(), POLLIN, 0);
}

ChildProcess::Output ChildProcess::readSome(std::string& text, int milliseconds) {
    const int descriptor = impl->fromChild.get();
    if (!awaitEvent(descriptor, POLLIN, milliseconds)) return Output::none;
    std::array<char, 8192> block;
    const std::size_t count = readDescriptor(descriptor, block.data(), block.size());
    text.append(block.data(), count);
    return count == 0 ? Output::ended : Output::some;
}

bool ChildProcess::write(std::string_view text, int milliseconds) {
    return writeDescriptor(impl->toChild.get(), text, milliseconds);
}

void ChildProcess::closeInput() {
    impl->toChild.reset();
}

void ChildProcess::terminate() {
    std::lock_guard guard(impl->mutex);
    if (!impl->collect()) kill(impl->process, SIGKILL);
}

bool ChildProcess::hasEnded() {
    std::lock_guard guard(impl->mutex);
    return impl->collect();
}

int ChildProcess::wait() {
    for (;;) {
        {
            std::lock_guard guard(impl->mutex);
            if (impl->collect()) return impl->exitCode;
        }
        // Waits without collecting, so that `terminate` can kill the child meanwhile.
        siginfo_t information;
        waitid(P_PID, static_cast<id_t>(impl->process), &information, WEXITED | WNOWAIT);
    }
}

}  // namespace valku
