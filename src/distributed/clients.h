#pragma once

#include <string>
#include <vector>

#include "chess/types.h"

// The clients of this process: how many it is to have, making them, and ending them.

namespace valku {

// How many children the user wants. Written by the settings, then by the commands that change it; read by
// those that make children. All on the thread that reads the commands, or on the main thread before there is
// another.
inline i32 numberOfLocalClients = 0;

// The peers that the settings name, in file order. Written by addRemotePeer alone, read by
// createRemoteClients.
struct RemotePeer {
    std::string host;
    u16 port;
};
inline std::vector<RemotePeer> remotePeers;

// Beyond 128 peers nothing is added. While the settings are read.
void addRemotePeer(std::string host, u16 port);

// At the start, and again when their number or the hash table has changed: as many children as
// numberOfLocalClients says, in the roles that have children. If the system gives fewer, that is told.
void createLocalClients();

// At the start of a root process: one client for each peer of the settings that can be reached.
void createRemoteClients();

// One client more, in the roles that have them; a failure is told. Also while a search runs.
void addLocalClient();
void addRemoteClient(const std::string& host, u16 port);

// Sends quit to all local clients and waits for their end; a client that does not end within a second is
// killed. Only while no search runs.
void quitLocalClients();

// At the end of the process: all clients of all kinds. A search that does not end may still be using their
// proxies, so these stay. Any thread.
void quitAllClients();

}  // namespace valku
