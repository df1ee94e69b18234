#pragma once

#include <span>

#include "protocol/command.h"

namespace valku {

// The commands of the tools. None is open to a caller, or while a board is set up.
std::span<const Command> toolCommands();

}  // namespace valku
