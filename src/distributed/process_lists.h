#pragma once

#include <vector>

#include "distributed/search_process.h"

// The search processes of this engine. Clients may be added while a search runs; they leave only between
// searches or at the very end.

namespace valku {

constexpr int maxSearchProcesses = 128;

using ProcessList = std::vector<AbstractSearchProcess*>;

// The lists as they stand at this moment, in order of creation. Any thread.
ProcessList allProcesses();  // the root first, then all clients
ProcessList localClients();
ProcessList remoteClients();

bool hasLocalClients();
bool hasRemoteClients();
int localClientCount();

// The first process to be entered is the root. False if there is no room.
bool enterProcess(AbstractSearchProcess& process);

// Takes a client out of the lists, if it is in them.
void removeProcess(const AbstractSearchProcess& client);

// Tells all processes that may be given a job that a new search begins: remote clients, local clients, the
// root.
void prepareSearches();

}  // namespace valku
