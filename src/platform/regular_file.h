#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace valku {

// Opens a file that is to be read to its end. Only a regular file is opened: a pipe or a device might never
// end.
inline std::ifstream openRegularFile(const std::string& path) {
    std::ifstream file;
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) file.open(path, std::ios::binary);
    return file;
}

// The bytes of the whole file, which is read from its start next. Nothing if the system does not say.
inline std::streamoff lengthOf(std::istream& file) {
    file.seekg(0, std::ios::end);
    const std::streamoff length = file.tellg();
    file.seekg(0);
    return length;
}

}  // namespace valku
