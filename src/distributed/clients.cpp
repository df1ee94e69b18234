#include "distributed/clients.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <vector>

#include "distributed/client_settings.h"
#include "distributed/local_client.h"
#include "distributed/process_lists.h"
#include "distributed/process_role.h"
#include "distributed/remote_client.h"
#include "distributed/root_search_process.h"
#include "distributed/standard_search_process.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/process.h"
#include "platform/text_sink.h"
#include "search/hash_table.h"

namespace valku {

namespace {

using Proxy = std::shared_ptr<AbstractClientSearchProcess>;

// The proxies of this process, each until its client has ended: wherever the end of the process comes upon a
// change, no living client is overlooked. Under the lock.
Mutex ownerMutex;
bool processEnds = false;
std::vector<Proxy>& proxies() {
    static std::vector<Proxy> owned;
    return owned;
}

// The children of a caller listen for callers of their own and are no clients of it; it only holds them.
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

// Says quit to all, and gives them one second together. They stay owned.
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

// Has a new client take part, unless it is in error. False if it is, or if there is no room for it.
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

// Room for one proxy more is made while there is no client yet that would have to be ended again. What
// `local` needs to race is had here too, so that no search can fail for it.
template <class MakeProxy>
bool startClient(bool localIsReady, MakeProxy makeProxy) {
    if (!localIsReady) return false;
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
    return startClient(standardSearchProcess.hasThread(), [number] {
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

// Whoever got fewer clients than wanted has most likely come to a limit of the system. What the last one has
// taken may be what the next search needs for its timer.
void makeRoomForSearch() {
    if (allProcesses().size() >= maxSearchProcesses) return;  // it was only the lists that were full
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
        startClient(rootSearchProcess->hasThread(),
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
