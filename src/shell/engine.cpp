#include "shell/engine.h"

#include <mutex>
#include <string>

#include "book/book_choice.h"
#include "book/book_file.h"
#include "book/opening_book.h"
#include "chess/fen.h"
#include "chess/tables.h"
#include "distributed/clients.h"
#include "distributed/listening_port.h"
#include "distributed/own_search_processes.h"
#include "distributed/process_lists.h"
#include "distributed/process_role.h"
#include "distributed/split_search.h"
#include "eval/eval_tables.h"
#include "platform/clock.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "platform/shared_value.h"
#include "platform/signals.h"
#include "protocol/client.h"
#include "protocol/commands.h"
#include "protocol/console.h"
#include "protocol/engine_name.h"
#include "protocol/engine_services.h"
#include "protocol/game.h"
#include "protocol/hash_report.h"
#include "protocol/option_effects.h"
#include "protocol/parameters.h"
#include "protocol/protocol_mode.h"
#include "protocol/uci.h"
#include "protocol/xboard.h"
#include "search/hash_table.h"
#include "search/history.h"
#include "search/upward_calls.h"
#include "shell/console_communicator.h"
#include "shell/settings_file.h"
#include "tablebases/probe.h"
#include "tablebases/registration.h"
#include "thinking/main_line.h"
#include "thinking/search_control.h"
#include "thinking/search_observer.h"
#include "thinking/thinking.h"
#include "tools/tool_commands.h"

namespace valku {

namespace {

void shutDownProcess() {
    // Clients first: a search may be waiting for one of them.
    quitAllClients();
    endSearchForShutDown();
    try {
        if (!areTablesInUse()) releaseHashTable();
    } catch (const Fault& fault) {
        communicator.farewell(fault.text() + "\n");
    }
    noteRefusedLines();
    communicator.setLogging(false);
}

// Set when the game stands and commands may come.
SharedFlag startedUp{false};

// Only the first thread shuts down; a second one returns when that has taken too long. The lock is never
// released. Before the start is complete there is nothing that the system does not clean up.
void shutDownOnce() {
    constexpr int patienceMs = 10000;
    static Mutex ending;
    if (startedUp && lockWithin(ending, patienceMs).release()) shutDownProcess();
    communicator.awaitBackgroundOutput();
}

class Shell final : public EngineServices {
  public:
    void setLogging(bool on) override { communicator.setLogging(on); }
    bool isLogging() const override { return communicator.isLogging(); }
    [[noreturn]] void quit(int exitCode) override {
        shutDownOnce();
        exitProcess(exitCode);
    }
};

Shell shell;

// The break key leaves the engine running; after any other signal the system ends the process. The command
// lock is kept, so that no command begins after the board has been reported.
void consoleControlHandler(int consoleSignal) {
    if (consoleSignal == consoleBreak) return;
    endSearchForShutDown();
    constexpr int patienceMs = 1000;
    const std::unique_lock lock = lockWithin(communicator.commandMutex, patienceMs);
    endSearchForShutDown();
    // The parent of a local client would take the text for an answer.
    if (processRole != roleLocalClient) {
        std::string text = "handler called with signal " + std::to_string(consoleSignal) + "\n";
        if (startedUp && lock) text += "board: " + writeFen() + "\n";
        communicator.farewell(text);
    }
    shutDownOnce();
}

// To the interface of the root process; to the log of any other, whose parent expects only answers to its
// jobs.
void tell(const std::string& text) {
    if (processRole == roleRoot) {
        sendText(text);
    } else {
        communicator.note(text);
    }
}

// Listening on another address than the user asked for would be worse than not listening.
void checkListenAddress() {
    if (rolePort == 0 || isListenAddressUsable()) return;
    communicator.status("Cannot listen on " + listenAddress + "\n");
    engineServices->quit(1);
}

// A child that is called over TCP takes no commands from its standard input, but the end of that input shows
// that its parent is gone. A child that has a caller by then ends with that connection, any other at once.
class ParentWatch final : public Thread {
  public:
    void run() override {
        std::string line;
        while (standardInput().readLine(line)) {
        }
        if (!communicator.hasCaller()) engineServices->quit(0);
    }
};

void watchParent() {
    if (processRole != roleRemoteClient || !standardInputIsPipe()) return;
    static ParentWatch watch;
    watch.start();
}

// Ends the process when its input is closed and its output has not been read for some seconds.
class OutputWatch final : public Thread {
  public:
    void run() override {
        constexpr u32 lookEveryMs = 250;
        constexpr double patience = 5;
        u32 seen = 0;
        for (double since = steadySeconds(); steadySeconds() - since < patience;) {
            sleepMilliseconds(lookEveryMs);
            const bool stands = communicator.isWriting() && communicator.piecesWritten() == seen;
            if (stands && communicator.hasInputEnded()) continue;
            seen = communicator.piecesWritten();
            since = steadySeconds();
        }
        engineServices->quit(0);
    }
};

void watchOutput() {
    if (processRole != roleRoot) return;
    static OutputWatch watch;
    watch.start();
}

void initTables() {
    initChessTables();
    initEvalTables();
    linkHistoryTables();
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
            settleProtocol(protocolConsole);
        } else {
            sleepMilliseconds(1);
        }
    }
}

// The observer that reports searches in the words of the protocol.
SearchObserver* observerOf(ProtocolMode mode) {
    static UciOutput uci;
    static XboardOutput xboard;
    static ConsoleOutput console;
    if (mode == protocolUci) return &uci;
    if (mode == protocolXboard) return &xboard;
    return &console;
}

void connectPorts() {
    shredderFen = protocolMode == protocolUci;
    ponderingTakenBack = [] {
        snapshotKings();
        printBoard();
    };
    useToolCommands(toolCommands());
    tablebaseProbe = probeTablebases;
    searchObserver = observerOf(protocolMode);
    splitSearchPort = splitSearch;
}

void createRootProcess(bool shareHash) {
    try {
        rootSearchProcess = std::make_unique<RootSearchProcess>(shareHash);
    } catch (const Fault& fault) {
        tell(fault.text() + "\n");
        engineServices->quit(1);
    }
    enterProcess(*rootSearchProcess);
    reportHashTable(shareHash);
}

void reportTablebases() {
    if (processRole != roleRoot) return;
    sendInformation("TBPath is " + TBPath + ", including " + std::to_string(largestTbMen) + "-men TBs.");
}

// Only a root process is asked for a move of the book.
void readBookFile() {
    if (processRole != roleRoot) return;
    if (!loadBook()) {
        sendText("No opening book found...\n");
    } else if (protocolMode == protocolConsole) {
        sendText(
            formatText("Book contains %i positions with %i moves.\n", bookSize.positions, bookSize.moves));
    }
}

void greet() {
    if (protocolMode != protocolConsole) return;
    sendText(std::string(engineName) + ", a chess engine. Type go to let it move, quit to leave.\n");
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
    watchParent();
    communicator.run();
    exitProcess(0);
}

}  // namespace

void engineMain(const CommandLine& commandLine) {
    startTime = steadySeconds();
    const TimeOfDay now = timeOfDay();
    seedBookChoice(static_cast<u64>(now.seconds) * 1000000 + static_cast<u64>(now.microseconds));
    textSink = &communicator;
    engineServices = &shell;
    installConsoleSignalHandler(consoleControlHandler);
    applyCommandLine(commandLine);
    watchOutput();
    initTables();
    detectProtocol();
    loadSettings();
    checkListenAddress();
    connectPorts();
    createRootProcess(commandLine.shareHash);
    createLocalClients();
    createRemoteClients();
    readBookFile();
    resetGame();
    registerTablebases();
    reportTablebases();
    mainLoop();
}

}  // namespace valku
