#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace valku {

// The bytes of a file, read whole. Only a regular file is opened: a pipe or a device might never end.
class FileText {
  public:
    explicit FileText(const std::string& path);

    // False if the file could not be opened, or the memory does not hold it. Of a file that could not be read
    // to its end, the part is there that could.
    bool isOpen() const { return bytes != nullptr; }
    std::string_view text() const { return {bytes.get(), size}; }

  private:
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

}  // namespace valku
