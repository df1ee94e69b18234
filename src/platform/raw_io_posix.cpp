#include <unistd.h>

#include "platform/descriptor_posix.h"
#include "platform/raw_io.h"
#include "platform/signals.h"

namespace valku {

void writeStandardOutput(std::string_view text) {
    [[maybe_unused]] static const bool pipesIgnored = (ignoreBrokenPipes(), true);
    writeDescriptor(STDOUT_FILENO, text);
}

LineReader& standardInput() {
    static DescriptorSource source(STDIN_FILENO);
    static LineReader reader(source);
    return reader;
}

}  // namespace valku
