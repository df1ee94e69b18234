#include "distributed/process_lists.h"

#include <algorithm>
#include <mutex>

#include "distributed/own_search_processes.h"
#include "platform/mutex.h"

namespace valku {

namespace {

Mutex listMutex;
ProcessList processes;  // under listMutex

// How many of a kind are in the list. Written under listMutex; read without it by those who only ask whether
// there is any.
SharedNumber localCount{0};
SharedNumber remoteCount{0};

SharedNumber& countOf(ProcessKind kind) {
    return kind == ProcessKind::localClient ? localCount : remoteCount;
}

ProcessList processesOf(ProcessKind kind) {
    const std::lock_guard lock(listMutex);
    ProcessList chosen;
    std::copy_if(processes.begin(), processes.end(), std::back_inserter(chosen),
                 [&](const AbstractSearchProcess* process) { return process->kind == kind; });
    return chosen;
}

}  // namespace

ProcessList allProcesses() {
    const std::lock_guard lock(listMutex);
    return processes;
}

ProcessList localClients() {
    return processesOf(ProcessKind::localClient);
}

ProcessList remoteClients() {
    return processesOf(ProcessKind::remoteClient);
}

bool hasLocalClients() {
    return localCount != 0;
}

bool hasRemoteClients() {
    return remoteCount != 0;
}

int localClientCount() {
    return localCount;
}

bool enterProcess(AbstractSearchProcess& process) {
    const std::lock_guard lock(listMutex);
    processes.reserve(maxSearchProcesses);
    if (processes.size() >= maxSearchProcesses) return false;
    processes.push_back(&process);
    if (process.kind != ProcessKind::root) countOf(process.kind) = countOf(process.kind) + 1;
    return true;
}

void removeProcess(const AbstractSearchProcess& client) {
    const std::lock_guard lock(listMutex);
    if (std::erase(processes, &client) != 0) countOf(client.kind) = countOf(client.kind) - 1;
}

void prepareSearches() {
    for (const ProcessList& list : {remoteClients(), localClients()}) {
        for (AbstractSearchProcess* const process : list) {
            if (process->isAvailable()) process->prepareSearch();
        }
    }
    rootSearchProcess->prepareSearch();
}

}  // namespace valku
