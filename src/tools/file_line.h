#pragma once

#include <istream>
#include <string>

namespace valku {

// The next line of a text file, without its end, which may be LF or CR LF. False at the end of the file.
inline bool readLine(std::istream& file, std::string& line) {
    if (!std::getline(file, line)) return false;
    if (line.ends_with('\r')) line.pop_back();
    return true;
}

}  // namespace valku
