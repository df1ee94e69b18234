#pragma once

#include <string>
#include <string_view>

namespace valku {

/// A file of this process alone: it did not exist before, and no child inherits it.
class NewFile {
  public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    enum class Result { done, taken, refused };

    /// Of several that create the same name at the same moment one succeeds; for the others, and where the
    /// name is that of a link, wherever it leads, the name is taken.
    Result create(const std::string& name);

    /// Past every buffer. False if not all of the text has found its place.
    bool write(std::string_view text);

    bool isOpen() const { return descriptor >= 0; }
    void close();

  private:
    int descriptor = -1;
};

}  // namespace valku
