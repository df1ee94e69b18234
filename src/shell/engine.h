#pragma once

#include "shell/command_line.h"

namespace valku {

// The start-up in its order, then the work of this process's role.
[[noreturn]] void engineMain(const CommandLine& commandLine);

}  // namespace valku
