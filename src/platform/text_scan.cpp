#include "platform/text_scan.h"

#include <limits>

namespace valku {

i64 readLongNumber(std::string_view text) {
    skipSeparators(text, [](char character) { return character == ' ' || character == '\t'; });
    takeMark(text, '+');
    const i64 nearest =
        text.starts_with('-') ? std::numeric_limits<i64>::min() : std::numeric_limits<i64>::max();
    return takeNumber<i64>(text, nearest).value_or(0);
}

i32 readNumber(std::string_view text) {
    constexpr i64 least = std::numeric_limits<i32>::min();
    constexpr i64 most = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(readLongNumber(text), least, most));
}

}  // namespace valku
