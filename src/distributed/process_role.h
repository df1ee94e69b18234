#pragma once

#include <string>

#include "chess/types.h"

// What the command line has made of this process among the processes of one search. Written once, by the main
// thread while there is no other; read by any thread.

namespace valku {

enum ProcessRole {
    roleRoot,  // the copy that the interface talks to
    roleLocalClient,
    roleRemoteServer,
    roleRemoteCaller,
    roleRemoteClient,
};

inline ProcessRole processRole = roleRoot;

// The TCP port of the command line, 0 for none: where a process that listens for its caller does so. The
// children of a `remotecaller` take the ports that follow.
inline u16 rolePort = 0;

inline std::string programPath;  // argv[0], for starting child processes

}  // namespace valku
