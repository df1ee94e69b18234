#pragma once

#include "platform/shared_value.h"

namespace valku {

// The process is about to end and long work stops. Set by the thread that ends the process, never cleared;
// read by any thread.
inline SharedFlag shutDownBegun{false};

}  // namespace valku
