#pragma once

#include "protocol/tool_port.h"

namespace valku {

// All tools, for the chain of commands.
ToolPort toolCommands();

}  // namespace valku
