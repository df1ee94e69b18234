#pragma once

#include <string>
#include <string_view>

namespace valku {

// A file that this process creates and no child inherits. For one thread at a time.
class NewFile {
  public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    enum class Result { done, taken, refused };

    // `taken` if the name exists, as a link too; of several processes that create it at the same moment one
    // succeeds. `refused` if the system does not allow the file.
    Result create(const std::string& name);

    // Unbuffered. False if not all of the text could be written.
    bool write(std::string_view text);

    bool isOpen() const { return descriptor >= 0; }
    void close();

  private:
    int descriptor = -1;
};

}  // namespace valku
