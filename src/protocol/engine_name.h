#pragma once

#include <string_view>

// What the engine calls itself, to interfaces and to people. The version is the build's.

namespace valku {

inline constexpr std::string_view engineName = "Valku " VALKU_VERSION;
inline constexpr std::string_view engineAuthor = "Ferrin";

}  // namespace valku
