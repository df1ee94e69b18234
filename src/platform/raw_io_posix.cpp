#include <sys/stat.h>
#include <unistd.h>

#include "platform/descriptor_posix.h"
#include "platform/raw_io.h"
#include "platform/read_ahead.h"
#include "platform/signals.h"

namespace valku {

namespace {

constexpr int forEver = -1;

void writeOutput(int descriptor, std::string_view text, int milliseconds) {
    [[maybe_unused]] static const bool pipesIgnored = (ignoreBrokenPipes(), true);
    if (milliseconds == forEver) {
        writeDescriptor(descriptor, text);
    } else {
        writeDescriptor(descriptor, text, milliseconds);
    }
}

ReadAhead& inputSource() {
    static ReadAhead source(STDIN_FILENO);
    return source;
}

}  // namespace

void writeStandardOutput(std::string_view text) {
    writeOutput(STDOUT_FILENO, text, forEver);
}

void writeStandardOutput(std::string_view text, int milliseconds) {
    writeOutput(STDOUT_FILENO, text, milliseconds);
}

bool errorOutputIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

bool errorOutputIsStandardOutput() {
    struct stat output {};
    struct stat error {};
    return fstat(STDOUT_FILENO, &output) == 0 && fstat(STDERR_FILENO, &error) == 0 &&
           output.st_dev == error.st_dev && output.st_ino == error.st_ino;
}

void writeErrorOutput(std::string_view text) {
    writeOutput(STDERR_FILENO, text, forEver);
}

void writeErrorOutput(std::string_view text, int milliseconds) {
    writeOutput(STDERR_FILENO, text, milliseconds);
}

LineReader& standardInput() {
    static LineReader reader(inputSource(), longestInputLine);
    return reader;
}

void watchStandardInput(std::span<const std::string_view> lines, std::string_view lastLine) {
    inputSource().watch(lines, lastLine);
}

bool standardInputHasBrought() {
    return inputSource().hasBrought();
}

}  // namespace valku
