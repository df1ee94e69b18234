// The second process of the platform's tests; the first argument says what it does.

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "platform/clock.h"
#include "platform/process.h"
#include "platform/raw_io.h"
#include "platform/shared_memory.h"
#include "platform/signals.h"

namespace valku {
namespace {

void say(const std::string& text) {
    writeStandardOutput(text + "\n");
}

// Answers its further arguments, then the first word of its input, then every line after it. Its ends of
// the pipes are non-blocking, as those that an interface gives to an engine may be.
void echo(int count, char** words) {
    for (const int end : {0, 1}) fcntl(end, F_SETFL, O_NONBLOCK);
    for (int i = 2; i < count; ++i) say(std::string("[").append(words[i]).append("]"));
    std::string text;
    if (standardInput().readWord(text)) say("word " + text);
    while (standardInput().readLine(text)) say("line " + text);
}

// Opens the block `id`, or as an engine does claims the first free id from there on, answers the id (0:
// none) and holds the block until the end of the input.
void share(const std::string& how, int id) {
    SharedMemory memory;
    SharedMemoryResult result = how == "open" ? memory.open(id) : memory.create(id, 4096);
    while (how == "claim" && result == SharedMemoryResult::taken) result = memory.create(++id, 4096);
    say(std::to_string(result == SharedMemoryResult::done ? id : 0));
    std::string line;
    standardInput().readLine(line);
}

void waitForSignals() {
    installConsoleSignalHandler([](int number) { say(std::to_string(number)); });
    say(std::to_string(getpid()));
    sleepMilliseconds(60000);
}

}  // namespace
}  // namespace valku

int main(int count, char** words) {
    using namespace valku;
    const std::string task = count > 1 ? words[1] : "";
    if (task == "echo") echo(count, words);
    if (task == "open" || task == "claim") share(task, std::stoi(words[2]));
    if (task == "signals") waitForSignals();
    exitProcess(7);
}
