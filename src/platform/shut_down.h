#pragma once

#include "platform/shared_value.h"

namespace valku {

// The process is about to end; long work leaves off. Set by whoever ends the process, on any thread, and
// never cleared.
inline SharedFlag shutDownBegun{false};

}  // namespace valku
