#pragma once

#include <string_view>

namespace valku {

// Settles on XBoard and tells the features.
void sendXboardFeatures();

}  // namespace valku
