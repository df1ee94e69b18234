#include "distributed/clients.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "distributed/local_client.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "distributed/process_role.h"
#include "distributed/remote_client.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/process.h"
#include "platform/text_sink.h"
#include "search/hash_table.h"

namespace valku {

namespace {

using Proxy = std::shared_ptr<AbstractClientSearchProcess>;

// Holds for the next two.
Mutex ownerMutex;

// Set by quitAllClients, read by whoever makes a client.
bool processEnds = false;

// The proxies of this process, each from before it takes part until its client has ended: whatever changes at
// the moment at which the process ends, no living client is overlooked.
std::vector<Proxy>& proxies() {
    static std::vector<Proxy> owned;
    return owned;
}

// The children of a remotecaller listen for callers of their own and are no clients of it; it only holds
// them. Of the thread that reads the commands.
std::vector<std::unique_ptr<ChildProcess>>& listeningChildren() {
    static std::vector<std::unique_ptr<ChildProcess>> children;
    return children;
}

bool isLocal(const Proxy& proxy) {
    return proxy->kind == ProcessKind::localClient;
}

bool isAny(const Proxy&) {
    return true;
}

std::vector<Proxy> owned(bool (*isMeant)(const Proxy&)) {
    const std::lock_guard lock(ownerMutex);
    std::vector<Proxy> chosen;
    std::copy_if(proxies().begin(), proxies().end(), std::back_inserter(chosen), isMeant);
    return chosen;
}

// Sends quit to all and gives them one second together; then they are killed. They stay owned.
void endClients(const std::vector<Proxy>& clients) {
    constexpr double patienceSeconds = 1;
    for (const Proxy& client : clients) removeProcess(*client);
    for (const Proxy& client : clients) client->quit();
    const double end = steadySeconds() + patienceSeconds;
    const auto haveEnded = [&] {
        return std::all_of(clients.begin(), clients.end(),
                           [](const Proxy& client) { return client->hasEnded(); });
    };
    while (!haveEnded() && steadySeconds() < end) sleepMilliseconds(1);
    for (const Proxy& client : clients) client->cutOff();
}

void endAndForget(const std::vector<Proxy>& clients) {
    endClients(clients);
    for (const Proxy& client : clients) client->awaitThread();
    const std::lock_guard lock(ownerMutex);
    for (const Proxy& client : clients) std::erase(proxies(), client);
}

// Lets a new client take part. False, and the client is ended, if it is in error or the lists are full.
bool enter(const Proxy& proxy) {
    if (proxy->inError) return false;
    bool tooLate = false;
    {
        const std::lock_guard lock(ownerMutex);
        proxies().push_back(proxy);
        tooLate = processEnds;
    }
    if (!tooLate && enterProcess(*proxy)) return true;
    endAndForget({proxy});
    return false;
}

// Makes room for one proxy more before there is a client that would have to be ended if there were none. The
// same holds for the thread that `local`, the racer of this process, needs beside its first client.
template <class MakeProxy>
bool startClient(AbstractSearchProcess& local, const MakeProxy& makeProxy) {
    if (!local.ensureThread()) return false;
    {
        const std::lock_guard lock(ownerMutex);
        proxies().reserve(proxies().size() + 1);
    }
    return enter(makeProxy());
}

bool hasRacingChildren() {
    return processRole == roleRoot || processRole == roleRemoteServer;
}

std::vector<std::string> sharedTableArguments(const char* role, i32 number) {
    return {role, std::to_string(number), std::to_string(sharedTableId), std::to_string(nHashTables)};
}

bool startRacingChild(i32 number) {
    return startClient(standardSearchProcess, [number] {
        return std::make_shared<LocalClientSearchProcess>(ownProgramPath(programPath),
                                                          sharedTableArguments("localclient", number));
    });
}

bool startListeningChild(i32 number) {
    auto child = std::make_unique<ChildProcess>();
    const auto arguments = sharedTableArguments("remoteclient", rolePort + number);
    if (!child->startBeside(ownProgramPath(programPath), arguments)) return false;
    listeningChildren().push_back(std::move(child));
    return true;
}

bool hasChildren() {
    return hasRacingChildren() || processRole == roleRemoteCaller;
}

// False if the system gives no process, no thread or no memory for it.
bool startChild(i32 number) {
    try {
        return hasRacingChildren() ? startRacingChild(number) : startListeningChild(number);
    } catch (const std::exception&) {
        return false;
    }
}

// Fewer clients than wanted most likely means a limit of the system. What the last one took may be what the
// next search needs for its timer.
void makeRoomForSearch() {
    if (allProcesses().size() >= maxSearchProcesses) return;  // only the lists were full
    const std::vector<Proxy> children = owned(isLocal);
    if (!children.empty()) endAndForget({children.back()});
}

void reportRefusal(const std::string& text) {
    if (processRole == roleRoot) {
        sendInformation(text);
    } else {
        textSink->status(text + "\n");
    }
}

}  // namespace

void addRemotePeer(std::string host, u16 port) {
    if (remotePeers.size() < maxSearchProcesses) remotePeers.push_back({std::move(host), port});
}

void createLocalClients() {
    if (!hasChildren()) return;
    const i32 wanted = std::min(numberOfLocalClients, maxSearchProcesses - 1);
    i32 number = 0;
    while (number < wanted && startChild(number + 1)) ++number;
    if (number >= wanted) return;
    makeRoomForSearch();
    reportRefusal(formatText("The system gives room for only %i of %i clients", localClientCount(), wanted));
}

void createRemoteClients() {
    if (processRole != roleRoot) return;
    for (const RemotePeer& peer : remotePeers) addRemoteClient(peer.host, peer.port);
}

void addLocalClient() {
    if (!hasChildren()) return;
    if (startChild(numberOfLocalClients + 1)) {
        ++numberOfLocalClients;
    } else {
        reportRefusal("The system gives no room for one more client");
    }
}

void addRemoteClient(const std::string& host, u16 port) {
    if (processRole != roleRoot) return;
    try {
        startClient(*rootSearchProcess,
                    [&] { return std::make_shared<RemoteClientSearchProcess>(host, port); });
    } catch (const std::exception&) {
        reportRefusal("The system gives no room for one more client");
    }
}

void quitLocalClients() {
    listeningChildren().clear();
    endAndForget(owned(isLocal));
}

void quitAllClients() {
    {
        const std::lock_guard lock(ownerMutex);
        processEnds = true;
    }
    endClients(owned(isAny));
}

}  // namespace valku
