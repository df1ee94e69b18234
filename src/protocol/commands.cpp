#include "protocol/commands.h"

#include <algorithm>
#include <atomic>
#include <span>
#include <string>
#include <string_view>

#include "book/book_report.h"
#include "chess/fen.h"
#include "distributed/clients.h"
#include "distributed/process_role.h"
#include "platform/fault.h"
#include "platform/raw_io.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "protocol/book_commands.h"
#include "protocol/client.h"
#include "protocol/console.h"
#include "protocol/edit_mode.h"
#include "protocol/engine_services.h"
#include "protocol/game.h"
#include "protocol/parameters.h"
#include "protocol/protocol_mode.h"
#include "protocol/received_moves.h"
#include "protocol/uci.h"
#include "protocol/xboard.h"
#include "thinking/search_control.h"
#include "thinking/search_flags.h"

namespace valku {

namespace {

void createRemoteClient(std::string_view rest) {
    std::string_view text = argumentsOf(rest);
    const std::string host(takeField(text));
    const i32 port = readNumber(text);
    if (port > 0) addRemoteClient(host, static_cast<u16>(port));
}

// clang-format off
constexpr Command commands[] = {
    {"force", Match::whole, [](std::string_view) { force(); }},
    {"undo", Match::whole, [](std::string_view) { undo(); }},
    {"remove", Match::whole, [](std::string_view) { undoTwice(); }},
    {"edit", Match::whole, [](std::string_view) { beginEdit(); }},
    {"fen", Match::prefix, [](std::string_view rest) { fenCommand(argumentsOf(rest)); }},
    {"importbook", Match::prefix, [](std::string_view rest) { importText(argumentsOf(rest)); }},
    {"pgn2book", Match::prefix, [](std::string_view rest) { importPgn(argumentsOf(rest)); }},
    {"writebook", Match::prefix, [](std::string_view rest) { writeBook(argumentsOf(rest)); }},
    {"showbook", Match::whole, [](std::string_view) { showBook(); }},
    {"bookstats", Match::whole, [](std::string_view) { showBookStats(); }},
    {"addmove", Match::prefix, [](std::string_view rest) { addMoveToBook(argumentsOf(rest)); }},
    {"rmmove", Match::prefix, [](std::string_view rest) { removeMoveFromBook(argumentsOf(rest)); }},
    {"server_createlocalclient", Match::prefix, [](std::string_view) { addLocalClient(); }},
    {"server_createremoteclient", Match::prefix, createRemoteClient},
    {"time", Match::prefix, [](std::string_view rest) { setClock(argumentsOf(rest)); }},
    {"sd", Match::prefix, [](std::string_view rest) { setDepth(argumentsOf(rest)); }},
    {"level", Match::prefix, [](std::string_view rest) { setLevel(argumentsOf(rest)); }},
    {"fritz", Match::whole, [](std::string_view) { fritz(); }},
    {"easy", Match::whole, [](std::string_view) { easy(); }},
    {"hard", Match::whole, [](std::string_view) { hard(); }},
    {"quit", Match::whole, [](std::string_view) { engineServices->quit(); }, caller | userWhileEditing},
    {"new", Match::whole, [](std::string_view) { newGame(); }},
    {"go", Match::prefix, [](std::string_view rest) { goCommand(argumentsOf(rest)); }},
    {"computer", Match::whole, [](std::string_view) { computer(); }},
    {"ponder ", Match::prefix, ponderMove},
    {"analyze", Match::whole, [](std::string_view) { analyze(); }},
    {"exit", Match::whole, [](std::string_view) { exitAnalysis(); }},
    {"?", Match::whole, [](std::string_view) { moveNow(); }},
    {"eval", Match::whole, [](std::string_view) { showEvaluation(); }},
    {"mirror", Match::whole, [](std::string_view) { mirror(); }},
    {"variant fischerandom", Match::whole, [](std::string_view) { chess960 = !chess960; }},
};

// Written at start-up alone.
std::span<const Command> toolCommands;

// After the moves of an XBoard interface, so that no word can be taken for one.
constexpr Command uciCommands[] = {
    {"isready", Match::whole, [](std::string_view) { isReady(); }, caller},
    {"setoption name", Match::prefix, [](std::string_view rest) { setOptionCommand(argumentsOf(rest)); }},
    {"position", Match::prefix, [](std::string_view rest) { positionCommand(argumentsOf(rest)); }},
    {"ponderhit", Match::whole, [](std::string_view) { ponderHit(); }},
    {"stop", Match::whole, [](std::string_view) { stopSearch(); }},
    {"ucinewgame", Match::whole, [](std::string_view) { beginNewGame(); }},
};
// clang-format on

bool fits(const Command& command, std::string_view line) {
    return command.match == Match::whole ? line == command.word : line.starts_with(command.word);
}

// Carries the line out with the first command of the chain that fits and is open to `whom`. A command that
// fails says why.
bool dispatchAmong(std::span<const Command> chain, std::string_view line, unsigned whom = 0) {
    for (const Command& command : chain) {
        if ((command.openTo & whom) != whom || !fits(command, line)) continue;
        try {
            command.handle(line.substr(command.word.size()));
        } catch (const Fault& fault) {
            sendText(fault.text() + "\n");
        }
        return true;
    }
    return false;
}

// Written by the thread that reads the commands alone.
std::atomic<u64> refusedLines = 0;

// A caller may send as many as he likes; they are not to fill anybody's disk.
void refuseLine() {
    constexpr std::string_view text = "Lines of the caller that are no part of a search are ignored.\n";
    if (refusedLines++ > 0) return;
    // The parent of a local client reads its output, and would take the text for the answer to a job.
    if (processRole != roleLocalClient || !errorOutputIsStandardOutput()) writeErrorOutput(text);
    textSink->note(text);
}

void dispatchForCaller(std::string_view line) {
    if (dispatchAmong(clientCommands(), line) || dispatchAmong(commands, line, caller) ||
        dispatchAmong(uciCommands, line, caller)) {
        return;
    }
    if (!line.empty()) refuseLine();
}

void dispatchWhileEditing(std::string_view line) {
    if (!dispatchAmong(commands, line, userWhileEditing)) editCommand(line);
}

}  // namespace

void useToolCommands(std::span<const Command> commandsOfTools) {
    toolCommands = commandsOfTools;
}

void dispatch(const std::string& line) {
    if (processRole != roleRoot) {
        dispatchForCaller(line);
    } else if (editMode) {
        dispatchWhileEditing(line);
    } else if (dispatchAmong(commands, line) || dispatchAmong(toolCommands, line)) {
        return;
    } else if (isMoveText(line)) {
        receiveMove(line, false);
    } else {
        dispatchAmong(uciCommands, line);
    }
}

void noteRefusedLines() {
    const u64 count = refusedLines;
    if (count > 0) textSink->note(std::to_string(count) + " lines of the caller were ignored.\n");
}

}  // namespace valku
