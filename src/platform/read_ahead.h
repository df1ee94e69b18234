#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/line_reader.h"

// For the bodies of this folder only.

namespace valku {

/// Stands between a descriptor and its reader, so that what comes can be looked at before its turn. Nothing
/// is taken away from the reader by that. For one thread at a time, that of the reader.
class ReadAhead final : public ByteSource {
  public:
    explicit ReadAhead(int number) : descriptor(number) {}

    std::size_t read(char* to, std::size_t size) override;

    /// See watchStandardInput().
    void watch(std::span<const std::string_view> lines, std::string_view lastLine);
    bool hasBrought();

  private:
    void fetch();
    void note(std::string_view bytes);
    void end();

    // Whoever sends more than this ahead is not looked at before it has been read.
    static constexpr std::size_t mostKept = std::size_t{1} << 20;
    // Longer lines are none that anyone looks for.
    static constexpr std::size_t longestLine = 64;

    int descriptor;
    std::string kept;          // fetched, but not read
    std::size_t position = 0;  // in `kept`
    bool ended = false;

    std::span<const std::string_view> wanted;
    std::string_view closing;
    bool brought = false;
    std::string openLine;      // the begin of the line that is coming in
    std::string completeLine;  // the one before it
};

}  // namespace valku
