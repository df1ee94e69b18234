#include "distributed/client_settings.h"

#include <utility>

#include "distributed/process_lists.h"

namespace valku {

i32 numberOfLocalClients = 0;
std::vector<RemotePeer> remotePeers;

void addRemotePeer(std::string host, u16 port) {
    if (remotePeers.size() < maxSearchProcesses) remotePeers.push_back({std::move(host), port});
}

}  // namespace valku
