#pragma once

#include <vector>

#include "distributed/search_process.h"

namespace valku {

constexpr int maxSearchProcesses = 128;

// The search processes of this engine, in order of their creation: the root process first, then the clients.
// Changed only while no search runs.
extern std::vector<AbstractSearchProcess*> allProcesses;
extern std::vector<AbstractSearchProcess*> localClients;
extern std::vector<AbstractSearchProcess*> remoteClients;

// Tells all processes that are not in error that a new search begins: remote clients, local clients, the
// root.
void prepareSearches();

// Appends to one of the small diagnostic files in the working directory; a failure to do so is passed over.
void appendDiagnostic(const char* file, const std::string& text);

// The system time in whole seconds, as the diagnostic files tell it.
std::string diagnosticTime();

}  // namespace valku
