#include "platform/number_text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace valku {

i64 readLongNumber(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t");
    if (start == std::string_view::npos) return 0;
    text.remove_prefix(start);
    if (text.front() == '+') text.remove_prefix(1);
    i64 number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc::result_out_of_range) return number;
    return text.front() == '-' ? std::numeric_limits<i64>::min() : std::numeric_limits<i64>::max();
}

i32 readNumber(std::string_view text) {
    constexpr i64 least = std::numeric_limits<i32>::min();
    constexpr i64 most = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(readLongNumber(text), least, most));
}

}  // namespace valku
