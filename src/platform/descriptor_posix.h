#pragma once

#include <cstddef>
#include <string_view>

#include "platform/line_reader.h"

// Reading and writing on file descriptors, for the bodies of this folder only.

namespace valku {

/// Waits for bytes, whether the descriptor blocks or not. Their number, 0 at the end or after a failure.
std::size_t readDescriptor(int descriptor, char* to, std::size_t size);

/// Writes everything, whether the descriptor blocks or not. False after a failure.
bool writeDescriptor(int descriptor, std::string_view text);

/// The same for a reader that may read no more: false also if nothing was taken for so many milliseconds. To
/// a pipe that somebody else writes to as well it may wait longer.
bool writeDescriptor(int descriptor, std::string_view text, int milliseconds);

/// Waits for a poll event, for ever if `milliseconds` is negative. False if nothing has come of it in time;
/// an end or a failure counts as something.
bool awaitEvent(int descriptor, short event, int milliseconds);

class DescriptorSource final : public ByteSource {
  public:
    explicit DescriptorSource(int number = -1) : descriptor(number) {}
    std::size_t read(char* to, std::size_t size) override { return readDescriptor(descriptor, to, size); }

    int descriptor;
};

}  // namespace valku
