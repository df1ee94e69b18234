#pragma once

#include <string>

#include "chess/types.h"

// What this process is: its protocol and its role among the processes of one search. Settled before the
// second thread starts.

namespace valku {

enum ProtocolMode : int { protocolUndecided = -1, protocolConsole = 0, protocolXboard = 1, protocolUci = 2 };

enum ProcessRole : int {
    roleRoot = 0,  // the copy that the interface talks to
    roleLocalClient = 1,
    roleRemoteServer = 2,
    roleRemoteCaller = 3,
    roleRemoteClient = 4,
};

extern int protocolMode;
extern int processRole;
extern u16 rolePort;             // the TCP port of the command line
extern std::string programPath;  // argv[0], for starting child processes

}  // namespace valku
