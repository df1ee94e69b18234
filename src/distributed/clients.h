#pragma once

#include <string>

#include "chess/types.h"

// Making clients and seeing them off.

namespace valku {

// At the start, and again when their number or the hash table has changed: as many children as
// numberOfLocalClients says, in the roles that have children.
void createLocalClients();

// At the start of a root process: one client for each peer of the settings that can be reached.
void createRemoteClients();

// One client more. Also while a search runs.
void addLocalClient();
void addRemoteClient(const std::string& host, u16 port);

// Says quit to all local clients and waits for their end; one that does not listen is ended the rough way.
// Only while no search runs.
void quitLocalClients();

// At the end of the process: all clients of all kinds. A search that would not end may still be using their
// proxies, so these stay.
void quitAllClients();

}  // namespace valku
