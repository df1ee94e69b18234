#include <unistd.h>

#include "platform/descriptor_posix.h"
#include "platform/raw_io.h"
#include "platform/signals.h"

namespace valku {

namespace {

void writeOutput(int descriptor, std::string_view text) {
    [[maybe_unused]] static const bool pipesIgnored = (ignoreBrokenPipes(), true);
    writeDescriptor(descriptor, text);
}

}  // namespace

void writeStandardOutput(std::string_view text) {
    writeOutput(STDOUT_FILENO, text);
}

bool errorOutputIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

void writeErrorOutput(std::string_view text) {
    writeOutput(STDERR_FILENO, text);
}

LineReader& standardInput() {
    static DescriptorSource source(STDIN_FILENO);
    static LineReader reader(source);
    return reader;
}

}  // namespace valku
