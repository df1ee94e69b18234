#include "shell/console_communicator.h"

#include <algorithm>
#include <mutex>

#include "distributed/process_role.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "protocol/commands.h"
#include "protocol/engine_services.h"
#include "protocol/protocol_mode.h"
#include "thinking/search_control.h"

namespace valku {

ConsoleCommunicator communicator;

namespace {

constexpr int patienceMs = 1000;

constexpr const char* directionPrefix(TextDirection direction) {
    switch (direction) {
        case TextDirection::sent:
            return "< ";
        case TextDirection::received:
            return "> ";
        default:
            return "! ";
    }
}

}  // namespace

bool ConsoleCommunicator::readLine(std::string& line) {
    if (port != 0) return peer.readLine(line);
    if (!standardInput().readLine(line)) return false;
    if (standardInput().wasCut()) {
        refuseLongLine();
        line.clear();
    }
    // Interfaces of other systems close a line with two characters.
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

void ConsoleCommunicator::run() {
    if (port != 0 && !peer.awaitCaller(port)) {
        status("There is no port to listen on.\n");
        engineServices->quit(1);
    }
    std::string line;
    while (readLine(line)) {
        send(line, TextDirection::received, false);
        const std::lock_guard lock(commandMutex);
        dispatch(line);
    }
    inputEnded = true;
    finishAtEndOfInput();
    engineServices->quit();
}

void ConsoleCommunicator::send(std::string_view text, TextDirection direction, bool writeOut) {
    // The log does not wait for a reader of the output.
    if (!writeOut) return log(text, direction);
    const std::lock_guard lock(outputMutex);
    if (peer.isOpen()) peer.send(text);
    write(text);
    log(text, direction);
}

void ConsoleCommunicator::status(std::string_view text) {
    const std::lock_guard lock(outputMutex);
    write(text);
    log(text, TextDirection::internal);
}

void ConsoleCommunicator::farewell(std::string_view text) {
    if (rolePort != 0) return background.write(text);
    const std::unique_lock lock = lockWithin(outputMutex, patienceMs);
    if (lock) writeStandardOutput(text, patienceMs);
}

void ConsoleCommunicator::awaitBackgroundOutput() {
    background.awaitEnd(patienceMs);
}

bool ConsoleCommunicator::hasInputEnded() const {
    return inputEnded || standardInputIsOrphaned();
}

// No command, and no part of one.
void ConsoleCommunicator::refuseLongLine() {
    std::string text = "Error: ";
    if (protocolMode == protocolXboard) text = "tellusererror ";
    if (protocolMode == protocolUci) text = "info string Error: ";
    text += "a line of more than " + std::to_string(longestInputLine) + " characters is passed over\n";
    // The parent of a child expects nothing but answers.
    send(text, TextDirection::sent, processRole == roleRoot);
}

// In pieces, so that a slow reader of a long text differs from one that has stopped reading.
void ConsoleCommunicator::write(std::string_view text) {
    if (rolePort != 0) return background.write(text);
    constexpr std::size_t longestPiece = 16384;
    writing = true;
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), longestPiece))) {
        writeStandardOutput(text.substr(0, longestPiece));
        written = written + 1;
    }
    writing = false;
}

void ConsoleCommunicator::log(std::string_view text, TextDirection direction) {
    if (!logEnabled) return;
    const std::lock_guard lock(logMutex);
    if (!logEnabled) return;
    std::string entry = directionPrefix(direction) + std::to_string(timeOfDay().seconds) + ":\n";
    entry.append(text).append("\n");
    if (openLog() && logFile.write(entry)) return;
    logFile.close();
    logEnabled = false;
    // The parent of a local client would take this for an answer.
    if (processRole != roleLocalClient) writeErrorOutput("valku: the log cannot be written\n", patienceMs);
}

// Takes the first number that is free.
bool ConsoleCommunicator::openLog() {
    NewFile::Result result = logFile.isOpen() ? NewFile::Result::done : NewFile::Result::taken;
    for (int number = 1; result == NewFile::Result::taken; ++number) {
        result = logFile.create("valkucom" + std::to_string(number) + ".log");
    }
    return result == NewFile::Result::done;
}

void ConsoleCommunicator::setLogging(bool on) {
    const std::lock_guard lock(logMutex);
    logEnabled = on;
    if (!on) logFile.close();
}

std::string ConsoleCommunicator::readWord() {
    std::string word;
    standardInput().readWord(word);
    return word;
}

}  // namespace valku
