#pragma once

#include <string>
#include <vector>

#include "chess/types.h"

namespace valku {

// A peer that the settings name.
struct RemotePeer {
    std::string host;
    u16 port;
};

extern i32 numberOfLocalClients;
extern std::vector<RemotePeer> remotePeers;  // in file order

// Beyond 128 peers nothing is added.
void addRemotePeer(std::string host, u16 port);

}  // namespace valku
