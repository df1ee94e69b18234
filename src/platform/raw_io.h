#pragma once

#include <string_view>

#include "platform/line_reader.h"

namespace valku {

/// Writes the whole text to standard output, past every stream buffer, so that it reaches the reader at once.
/// Waits while a pipe is full. A closed or failing output is passed over in silence. Two threads that write
/// at the same time may mix their texts; the caller holds a lock where that matters.
void writeStandardOutput(std::string_view text);

/// True if a person reads standard error, so that the progress of long work may be shown there.
bool errorOutputIsTerminal();

/// The same as writeStandardOutput, for standard error.
void writeErrorOutput(std::string_view text);

/// The process's standard input. It keeps a block of its own: nothing else may read that input beside it.
LineReader& standardInput();

}  // namespace valku
