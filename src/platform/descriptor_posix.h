#pragma once

#include <cstddef>
#include <string_view>

#include "platform/line_reader.h"

// Reading and writing on file descriptors, for the .cpp files of this folder only.

namespace valku {

// Waits for bytes, also on a non-blocking descriptor. Returns their number; 0 at the end or after a failure.
std::size_t readDescriptor(int descriptor, char* to, std::size_t size);

// Writes everything, also to a non-blocking descriptor. False after a failure.
bool writeDescriptor(int descriptor, std::string_view text);

// The same for a reader that may have stopped reading: false also if it takes nothing for `milliseconds`.
// The wait may be longer if another process writes to the same pipe.
bool writeDescriptor(int descriptor, std::string_view text, int milliseconds);

// Waits for a poll event, without limit if `milliseconds` is negative. False if the time ran out; the end of
// the stream and a failure count as events.
bool awaitEvent(int descriptor, short event, int milliseconds);

class DescriptorSource final : public ByteSource {
  public:
    explicit DescriptorSource(int number = -1) : descriptor(number) {}
    std::size_t read(char* to, std::size_t size) override { return readDescriptor(descriptor, to, size); }

    int descriptor;
};

}  // namespace valku
