#pragma once

#include <string_view>

#include "platform/integers.h"

namespace valku {

// The decimal number at the start of a text, blanks before it passed over. Text that is no number reads as 0;
// a number too large for 32 bits reads as the largest or smallest that fits.
i32 readNumber(std::string_view text);

// The same in 64 bits.
i64 readLongNumber(std::string_view text);

}  // namespace valku
