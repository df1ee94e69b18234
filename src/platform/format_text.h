#pragma once

#include <string>

namespace valku {

// printf into a string; empty if the format fails.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);

}  // namespace valku
