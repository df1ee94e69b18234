#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/line_reader.h"

// For the .cpp files of this folder only.

namespace valku {

// A buffer between a descriptor and its reader in which arriving lines can be looked at before they are read.
// Nothing is lost for the reader. Only for the reader's thread.
class ReadAhead final : public ByteSource {
  public:
    explicit ReadAhead(int number) : descriptor(number) {}

    std::size_t read(char* to, std::size_t size) override;

    // See watchStandardInput().
    void watch(std::span<const std::string_view> lines, std::string_view lastLine);
    bool hasBrought();

  private:
    void fetch();
    void note(std::string_view bytes);
    void end();

    // Input beyond this is looked at only after the earlier input has been read.
    static constexpr std::size_t mostKept = std::size_t{1} << 20;
    // Longer lines cannot match.
    static constexpr std::size_t longestLine = 64;

    int descriptor;
    std::string kept;          // fetched, but not read
    std::size_t position = 0;  // in `kept`
    bool ended = false;

    std::span<const std::string_view> wanted;
    std::string_view closing;
    bool brought = false;
    std::string openLine;      // the beginning of the line that is arriving
    std::string completeLine;  // the one before it
};

}  // namespace valku
