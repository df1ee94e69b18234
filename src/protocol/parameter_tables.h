#pragma once

#include <string>

namespace valku {

// All settings and all options, with types, defaults, ranges and meanings, as two Markdown tables with an
// empty line between them. The defaults are those that initParameters has noted; nothing may have been set
// since.
std::string parameterTables();

}  // namespace valku
