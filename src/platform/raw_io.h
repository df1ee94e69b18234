#pragma once

#include <span>
#include <string_view>

#include "platform/line_reader.h"

namespace valku {

// Writes the whole text to standard output, unbuffered, so that it reaches the reader at once. Waits while a
// pipe is full. A closed or failing output is ignored. Any thread; two that write at the same time may mix
// their texts, so the caller holds a lock where that matters.
void writeStandardOutput(std::string_view text);

// The same for a reader that may have stopped reading: gives up when it takes nothing for `milliseconds`.
void writeStandardOutput(std::string_view text, int milliseconds);

// True if standard error is a terminal, where the progress of long work may be shown.
bool errorOutputIsTerminal();

// True if standard error and standard output are the same file, pipe or terminal.
bool errorOutputIsStandardOutput();

// The same as the two of writeStandardOutput, for standard error.
void writeErrorOutput(std::string_view text);
void writeErrorOutput(std::string_view text, int milliseconds);

// Enough for the longest game; an endless line must not fill the memory.
constexpr std::size_t longestInputLine = 1 << 20;

// The process's standard input, with lines and words of at most that length. It is buffered: nothing else may
// read that input. For the thread that reads the commands.
LineReader& standardInput();

// Begins to look ahead in standard input for one of `lines` among those that arrive from now on; the array
// must outlive the search. The end of the input counts as one of them, unless it follows right after
// `lastLine`. For the thread that reads that input.
void watchStandardInput(std::span<const std::string_view> lines, std::string_view lastLine);

// True once such a line has arrived; reading will still deliver it. Never waits.
bool standardInputHasBrought();

}  // namespace valku
