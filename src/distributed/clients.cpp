#include "distributed/clients.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

#include "distributed/client_settings.h"
#include "distributed/local_client.h"
#include "distributed/process_lists.h"
#include "distributed/remote_client.h"
#include "platform/process.h"
#include "search/hash_table.h"
#include "search/process_state.h"

namespace valku {

namespace {

// The proxies of this process, those of clients that have been seen off included.
Mutex ownerMutex;
std::vector<std::unique_ptr<AbstractClientSearchProcess>>& proxies() {
    static std::vector<std::unique_ptr<AbstractClientSearchProcess>> owned;
    return owned;
}

// The children of a caller listen for callers of their own and are no clients of it; it only holds them.
std::vector<std::unique_ptr<ChildProcess>>& listeningChildren() {
    static std::vector<std::unique_ptr<ChildProcess>> children;
    return children;
}

void enter(std::unique_ptr<AbstractClientSearchProcess> proxy) {
    if (proxy->inError) return;
    if (!enterProcess(*proxy)) {
        proxy->quit();
        proxy->awaitEnd();
        return;
    }
    const std::lock_guard lock(ownerMutex);
    proxies().push_back(std::move(proxy));
}

bool hasRacingChildren() {
    return processRole == roleRoot || processRole == roleRemoteServer;
}

std::vector<std::string> sharedTableArguments(const char* role, i32 number) {
    return {role, std::to_string(number), std::to_string(sharedTableId), std::to_string(nHashTables)};
}

void startRacingChild(i32 number) {
    enter(std::make_unique<LocalClientSearchProcess>(ownProgramPath(programPath),
                                                     sharedTableArguments("localclient", number)));
}

void startListeningChild(i32 number) {
    auto child = std::make_unique<ChildProcess>();
    const auto arguments = sharedTableArguments("remoteclient", rolePort + number);
    if (child->startBeside(ownProgramPath(programPath), arguments)) {
        listeningChildren().push_back(std::move(child));
    }
}

std::vector<AbstractClientSearchProcess*> sayQuit(ProcessKind kind) {
    std::vector<AbstractClientSearchProcess*> told;
    while (AbstractSearchProcess* const process = removeFirstClient(kind)) {
        process->quit();
        told.push_back(static_cast<AbstractClientSearchProcess*>(process));
    }
    return told;
}

}  // namespace

void createLocalClients() {
    const i32 wanted = std::min(numberOfLocalClients, maxSearchProcesses - 1);
    for (i32 number = 1; number <= wanted; ++number) {
        if (hasRacingChildren()) {
            startRacingChild(number);
        } else if (processRole == roleRemoteCaller) {
            startListeningChild(number);
        }
    }
}

void createRemoteClients() {
    if (processRole != roleRoot) return;
    for (const RemotePeer& peer : remotePeers) addRemoteClient(peer.host, peer.port);
}

void addLocalClient() {
    if (hasRacingChildren()) startRacingChild(++numberOfLocalClients);
}

void addRemoteClient(const std::string& host, u16 port) {
    if (processRole == roleRoot) enter(std::make_unique<RemoteClientSearchProcess>(host, port));
}

void quitLocalClients() {
    listeningChildren().clear();
    for (AbstractClientSearchProcess* const client : sayQuit(ProcessKind::localClient)) {
        client->awaitEnd();
        const std::lock_guard lock(ownerMutex);
        std::erase_if(proxies(), [&](const auto& owned) { return owned.get() == client; });
    }
}

void quitAllClients() {
    std::vector<AbstractClientSearchProcess*> told = sayQuit(ProcessKind::localClient);
    for (AbstractClientSearchProcess* const client : sayQuit(ProcessKind::remoteClient))
        told.push_back(client);
    for (AbstractClientSearchProcess* const client : told) client->awaitEnd();
}

}  // namespace valku
