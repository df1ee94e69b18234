#include "shell/engine.h"

#include <mutex>
#include <string>

#include "book/book_choice.h"
#include "book/book_file.h"
#include "book/book_settings.h"
#include "chess/fen.h"
#include "chess/tables.h"
#include "distributed/client_job.h"
#include "distributed/clients.h"
#include "distributed/peer_socket.h"
#include "distributed/process_lists.h"
#include "distributed/root_search_process.h"
#include "distributed/split_root_search.h"
#include "distributed/split_search.h"
#include "eval/eval_tables.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "platform/shared_value.h"
#include "platform/signals.h"
#include "protocol/board_output.h"
#include "protocol/engine_services.h"
#include "protocol/game_commands.h"
#include "protocol/game_snapshot.h"
#include "protocol/hash_report.h"
#include "protocol/parameters.h"
#include "protocol/search_output.h"
#include "protocol/uci.h"
#include "protocol/xboard.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/process_state.h"
#include "search/search_control.h"
#include "search/tablebase_port.h"
#include "search/thinking.h"
#include "search/thinking_state.h"
#include "shell/console_communicator.h"
#include "shell/settings_file.h"
#include "tablebases/probe.h"
#include "tablebases/registration.h"
#include "tools/tool_commands.h"

namespace valku {

namespace {

constexpr const char* banner = "Valku 4.00, a chess engine. Type go to let it move, quit to leave.\n";

void shutDownProcess() {
    // Clients first: a search may be waiting for one of them.
    quitAllClients();
    endSearchForShutDown();
    try {
        if (!searchRunning) releaseHashTable();
    } catch (const std::string& text) {
        sendText(text + "\n");
    }
    communicator.setLogging(false);
}

class Shell final : public EngineServices {
  public:
    void setLogging(bool on) override { communicator.setLogging(on); }
    bool isLogging() const override { return communicator.isLogging(); }
    [[noreturn]] void quit(int exitCode) override {
        shutDownProcess();
        exitProcess(exitCode);
    }
};

Shell shell;

// Set when the game stands and commands may come.
SharedFlag startedUp{false};

// Waits for the command that is being carried out, but not for ever.
std::unique_lock<Mutex> holdCommands() {
    constexpr int patienceMs = 1000;
    std::unique_lock lock(communicator.commandMutex, std::try_to_lock);
    for (int waited = 0; !lock && waited < patienceMs; ++waited) {
        sleepMilliseconds(1);
        lock.try_lock();
    }
    return lock;
}

// The break key leaves the engine running; after any other signal the system ends the process. No command is
// begun any more from the moment on at which the board is told.
void consoleControlHandler(int consoleSignal) {
    if (consoleSignal == consoleBreak) return;
    endSearchForShutDown();
    const std::unique_lock lock = holdCommands();
    endSearchForShutDown();
    // What a child writes there its parent would take for an answer.
    if (processRole != roleLocalClient) {
        writeStandardOutput("handler called with signal " + std::to_string(consoleSignal) + "\n");
        if (startedUp && lock) writeStandardOutput("board: " + writeFen() + "\n");
    }
    if (startedUp) shutDownProcess();
}

// To the interface of a root process. The parent of any other one expects nothing but answers to its jobs.
void tell(const std::string& text) {
    if (processRole == roleRoot) {
        sendText(text);
    } else {
        communicator.note(text);
    }
}

// A peer that listens where the user has not asked for it is worse than none.
void checkListenAddress() {
    if (rolePort == 0 || isListenAddressUsable()) return;
    communicator.status("Cannot listen on " + listenAddress + "\n");
    exitProcess(1);
}

// A child that is called over TCP does not read its standard input; that its maker is gone shows there all
// the same.
class MakerWatch final : public Thread {
  public:
    void run() override {
        std::string line;
        while (standardInput().readLine(line)) {
        }
        engineServices->quit(0);
    }
};

void watchMaker() {
    if (processRole != roleRemoteClient || !standardInputIsPipe()) return;
    static MakerWatch watch;
    watch.start();
}

void initTables() {
    initChessTables();
    initEvalTables();
    linkHistoryTables();
    initBookWeights();
    initParameters();
}

// Tries each word of the input until one names a protocol. Whatever follows that word on its line is the
// first command.
void detectProtocol() {
    while (protocolMode == protocolUndecided) {
        const std::string word = communicator.readWord();
        if (word.empty()) exitProcess(0);
        if (word == "uci_log" || word == "console_log") communicator.setLogging(true);
        if (word == "uci" || word == "uci_log") {
            sendUciIdentification();
        } else if (word == "xboard") {
            sendXboardFeatures();
        } else if (word == "console" || word == "console_log") {
            protocolMode = protocolConsole;
        } else {
            sleepMilliseconds(1);
        }
    }
}

void connectPorts() {
    shredderFen = protocolMode == protocolUci;
    ponderingTakenBack = [] {
        snapshotKings();
        printBoard();
    };
    toolPort = toolCommands();
    tablebaseProbe = probeTablebases;
    searchPorts = {
        .observer = searchOutput(),
        .prepareSearches = prepareSearches,
        .splitRootSearch = splitRootSearch,
        .splitSearch = splitSearch,
        .tryBookMove = tryBookMove,
    };
}

void createRootProcess(bool shareHash) {
    try {
        rootSearchProcess = std::make_unique<RootSearchProcess>(shareHash);
    } catch (const std::string& text) {
        tell(text + "\n");
        exitProcess(1);
    }
    enterProcess(*rootSearchProcess);
    reportHashTable(shareHash);
}

void reportTablebases() {
    if (processRole != roleRoot) return;
    sendText(std::string(protocolMode == protocolUci ? "info string " : "") + "TBPath is " + TBPath +
             ", including " + std::to_string(largestTbMen) + "-men TBs.\n");
}

void greet() {
    if (protocolMode != protocolConsole) return;
    sendText(banner);
    printBoard();
    std::string text = "The following search processes will be used:\n";
    for (const AbstractSearchProcess* process : allProcesses()) text += process->name() + "\n";
    sendText(text);
}

[[noreturn]] void mainLoop() {
    greet();
    startedUp = true;
    if (processRole == roleRoot) {
        communicator.start();
        runThinkingCycle();
    }
    communicator.setPort(rolePort);
    createClientThread();
    watchMaker();
    communicator.run();
    exitProcess(0);
}

}  // namespace

void engineMain(const CommandLine& commandLine) {
    startTime = lastOutputTime = steadySeconds();
    const TimeOfDay now = timeOfDay();
    seedBookChoice(static_cast<u64>(now.seconds) * 1000000 + static_cast<u64>(now.microseconds));
    textSink = &communicator;
    engineServices = &shell;
    installConsoleSignalHandler(consoleControlHandler);
    applyCommandLine(commandLine);
    initTables();
    detectProtocol();
    loadSettings();
    checkListenAddress();
    connectPorts();
    createRootProcess(commandLine.shareHash);
    createLocalClients();
    createRemoteClients();
    loadBook();
    resetGame();
    tbStartUp(TBPath);
    reportTablebases();
    mainLoop();
}

}  // namespace valku
