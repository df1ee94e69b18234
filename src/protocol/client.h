#pragma once

#include <span>

#include "protocol/command.h"

// The front-end of a process that is no root: its commands come from a parent. A job arrives in several
// lines, each of which adds to what those before it have told. The last one starts the search: only there the
// whole is judged, and becomes gamePosition if a game can have it.

namespace valku {

// The thread that searches for the parent. Once, before commands are read.
void createClientThread();

// The words of a parent; for a process with a client thread.
std::span<const Command> clientCommands();

}  // namespace valku
