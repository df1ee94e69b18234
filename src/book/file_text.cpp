#include "book/file_text.h"

#include <filesystem>
#include <fstream>
#include <new>

namespace valku {

FileText::FileText(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff length = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (length < 0) return;
    bytes.reset(new (std::nothrow) char[static_cast<std::size_t>(length) + 1]);
    if (!bytes) return;
    file.seekg(0);
    file.read(bytes.get(), length);
    size = static_cast<std::size_t>(file.gcount());
}

}  // namespace valku
