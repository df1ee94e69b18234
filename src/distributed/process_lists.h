#pragma once

#include <vector>

#include "distributed/search_process.h"

// The search processes that take part in the searches of this engine. Clients may be added while a search
// runs; they leave only between searches or when the process ends. StandardSearchProcess is in no list.

namespace valku {

constexpr int maxSearchProcesses = 128;

using ProcessList = std::vector<AbstractSearchProcess*>;

// The lists as they are at this moment, in order of creation. Any thread, as the next three.
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
// root. On the thread that hands out the jobs, between two searches.
void prepareSearches();

}  // namespace valku
