#pragma once

#include <span>
#include <string_view>

#include "platform/line_reader.h"

namespace valku {

/// Writes the whole text to standard output, past every stream buffer, so that it reaches the reader at once.
/// Waits while a pipe is full. A closed or failing output is passed over in silence. Two threads that write
/// at the same time may mix their texts; the caller holds a lock where that matters.
void writeStandardOutput(std::string_view text);

/// The same for a reader that may read no more: gives up once nothing was taken for so many milliseconds.
void writeStandardOutput(std::string_view text, int milliseconds);

/// True if a person reads standard error, so that the progress of long work may be shown there.
bool errorOutputIsTerminal();

/// True if standard error leads where standard output does, so that whoever reads the one gets the other too.
bool errorOutputIsStandardOutput();

/// The same as the two of writeStandardOutput, for standard error.
void writeErrorOutput(std::string_view text);
void writeErrorOutput(std::string_view text, int milliseconds);

/// Room for the longest game; what comes without an end must not fill the memory.
constexpr std::size_t longestInputLine = 1 << 20;

/// The process's standard input, with lines and words of at most that length. It keeps a block of its own:
/// nothing else may read that input beside it.
LineReader& standardInput();

/// Begins to look ahead in standard input for one of `lines`, which must live on, among those that come from
/// now on. The end of the input counts as one of them, unless `lastLine` stands right before it: after that
/// line nothing is expected any more. For the thread that reads that input.
void watchStandardInput(std::span<const std::string_view> lines, std::string_view lastLine);

/// True once such a line has come. It is still to be read. Never waits.
bool standardInputHasBrought();

}  // namespace valku
