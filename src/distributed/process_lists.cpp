#include "distributed/process_lists.h"

#include <fstream>

#include "distributed/root_search_process.h"
#include "platform/clock.h"

namespace valku {

std::vector<AbstractSearchProcess*> allProcesses;
std::vector<AbstractSearchProcess*> localClients;
std::vector<AbstractSearchProcess*> remoteClients;

void prepareSearches() {
    for (const auto* list : {&remoteClients, &localClients}) {
        for (AbstractSearchProcess* const process : *list) {
            if (!process->inError) process->prepareSearch();
        }
    }
    rootSearchProcess->prepareSearch();
}

void appendDiagnostic(const char* file, const std::string& text) {
    std::ofstream(file, std::ios::app) << text << '\n';
}

std::string diagnosticTime() {
    return std::to_string(timeOfDay().seconds);
}

}  // namespace valku
