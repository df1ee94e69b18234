#include "shell/command_line.h"

#include <string_view>

#include "distributed/process_role.h"
#include "platform/text_scan.h"
#include "protocol/protocol_mode.h"
#include "search/hash_table.h"

namespace valku {

namespace {

// Which argument of a role word holds what; 0 where it has no such argument.
struct RoleForm {
    std::string_view word;
    ProcessRole role;
    int port;
    int tableId;
    int buckets;
};

constexpr RoleForm roleForms[] = {
    {"sharehash", roleRoot, 0, 2, 3},
    {"localclient", roleLocalClient, 0, 3, 4},
    {"remoteserver", roleRemoteServer, 2, 0, 0},
    {"remotecaller", roleRemoteCaller, 2, 0, 0},
    {"remoteclient", roleRemoteClient, 2, 3, 4},
};

}  // namespace

CommandLine parseCommandLine(int argc, char** argv) {
    CommandLine result{.programPath = argc > 0 ? argv[0] : "", .role = roleRoot};
    if (argc < 2) return result;
    result.printsSettings = argc == 2 && argv[1] == std::string_view("--settings");
    result.fixesProtocol = true;
    const auto argument = [&](int index) { return std::string_view(index < argc ? argv[index] : ""); };
    for (const RoleForm& form : roleForms) {
        if (argument(1) != form.word) continue;
        result.role = form.role;
        if (form.port) result.port = static_cast<u16>(readNumber(argument(form.port)));
        if (form.tableId) {
            result.shareHash = true;
            result.tableId = readNumber(argument(form.tableId));
            result.buckets = readLongNumber(argument(form.buckets));
        }
    }
    return result;
}

void applyCommandLine(const CommandLine& commandLine) {
    programPath = commandLine.programPath;
    processRole = commandLine.role;
    rolePort = commandLine.port;
    if (commandLine.fixesProtocol) settleProtocol(protocolUci);
    if (!commandLine.shareHash) return;
    sharedTableId = commandLine.tableId;
    setHashBuckets(commandLine.buckets);
}

}  // namespace valku
