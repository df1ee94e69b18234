#pragma once

#include <algorithm>
#include <string_view>

namespace valku {

// The next word of a command's arguments, which are moved on behind it; empty when there is none.
inline std::string_view takeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace valku
