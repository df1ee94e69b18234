#include "shell/console_communicator.h"

#include <mutex>

#include "platform/clock.h"
#include "platform/raw_io.h"
#include "protocol/dispatcher.h"
#include "protocol/engine_services.h"
#include "search/search_control.h"

namespace valku {

ConsoleCommunicator communicator;

namespace {

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

// The first numbered name that is not taken.
std::string freeLogName() {
    for (int number = 1;; ++number) {
        const std::string name = "valkucom" + std::to_string(number) + ".log";
        if (!std::ifstream(name)) return name;
    }
}

}  // namespace

bool ConsoleCommunicator::readLine(std::string& line) {
    if (port != 0) return peer.readLine(line);
    if (!standardInput().readLine(line)) return false;
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
    finishAtEndOfInput();
    engineServices->quit();
}

void ConsoleCommunicator::send(std::string_view text, TextDirection direction, bool writeOut) {
    const std::lock_guard lock(outputMutex);
    if (writeOut && peer.isOpen()) peer.send(text);
    if (writeOut) writeStandardOutput(text);
    if (logEnabled) log(text, direction);
}

void ConsoleCommunicator::status(std::string_view text) {
    const std::lock_guard lock(outputMutex);
    writeStandardOutput(text);
    if (logEnabled) log(text, TextDirection::internal);
}

void ConsoleCommunicator::log(std::string_view text, TextDirection direction) {
    if (!logStream.is_open()) logStream.open(freeLogName());
    logStream << directionPrefix(direction) << timeOfDay().seconds << ":\n" << text << '\n' << std::flush;
}

void ConsoleCommunicator::setLogging(bool on) {
    const std::lock_guard lock(outputMutex);
    logEnabled = on;
    if (!on && logStream.is_open()) logStream.close();
}

std::string ConsoleCommunicator::readWord() {
    std::string word;
    standardInput().readWord(word);
    return word;
}

}  // namespace valku
