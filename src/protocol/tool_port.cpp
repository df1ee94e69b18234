#include "protocol/tool_port.h"

namespace valku {

ToolPort toolPort{};

}  // namespace valku
