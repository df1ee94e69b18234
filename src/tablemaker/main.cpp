#include <algorithm>
#include <iterator>
#include <thread>

#include "chess/tables.h"
#include "platform/raw_io.h"
#include "platform/text_scan.h"
#include "tablebases/index_layout.h"
#include "tablemaker/commands.h"

// The program valku-tables: its command line.

namespace valku {

namespace {

constexpr int mostThreads = 256;

constexpr const char* help =
    "valku-tables makes, checks and reads endgame tables: distance to mate, one file a class and side to "
    "move.\n"
    "\n"
    "valku-tables generate [CLASS...] [--all-3] [--all-4] [--compress] [--dir D] [--threads N]\n"
    "    makes the tables of the classes (such as kqkr) and of those that they rest on. What is in the "
    "directory\n"
    "    already is not made again, so that an interrupted run goes on where it stopped.\n"
    "valku-tables verify [FILE...] [--dir D] [--threads N]\n"
    "    holds every entry against the moves of its position; without files all tables of the directory. "
    "The\n"
    "    tables that moves lead to are looked for beside the file.\n"
    "valku-tables compress FILE... [--threads N]\n"
    "    writes FILE.emd beside FILE.\n"
    "valku-tables expand FILE...\n"
    "    writes the plain table beside a compressed one.\n"
    "valku-tables info FILE...\n"
    "    entries, wins, draws and losses, and the longest mate.\n"
    "valku-tables probe FEN... [--dir D]\n"
    "    value, distance to mate and best moves.\n"
    "valku-tables lengths\n"
    "    works out the lengths of all tables anew.\n"
    "\n"
    "--dir D       the directory of the tables, the folder tables if it is left out\n"
    "--threads N   threads to work on, as many as the machine has processors if it is left out\n"
    "--help        this text\n";

struct Command {
    const char* name;
    const char* options;
    const char* needs;  // the words that must be given, null if none
    int (*run)(const TablesArguments&);
};

constexpr Command commands[] = {
    {"generate", "--dir --threads --compress --all-3 --all-4", nullptr, generateTables},
    {"verify", "--dir --threads", nullptr, verifyTables},
    {"compress", "--threads", "files", compressTables},
    {"expand", "", "files", expandTables},
    {"info", "", "files", reportTables},
    {"probe", "--dir", "positions, each FEN as one argument", probePositions},
    {"lengths", "", nullptr, reportLengths},
};

int parseThreads(const std::string& text) {
    const int threads = wholeNumber<int>(text).value_or(0);
    if (threads < 1 || threads > mostThreads)
        throw UsageFault("--threads takes a number from 1 to " + std::to_string(mostThreads));
    return threads;
}

TablesArguments parse(const Command& command, const std::vector<std::string>& words) {
    TablesArguments arguments;
    arguments.threads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (!word.starts_with("--")) {
            arguments.words.push_back(word);
            continue;
        }
        if ((" " + std::string(command.options) + " ").find(" " + word + " ") == std::string::npos)
            throw UsageFault(std::string(command.name) + " has no option " + word);
        const auto value = [&] {
            if (++i == words.size()) throw UsageFault(word + " needs a value");
            return words[i];
        };
        if (word == "--dir") arguments.directory = value();
        if (word == "--threads") arguments.threads = parseThreads(value());
        if (word == "--compress") arguments.compress = true;
        if (word == "--all-3") arguments.all3 = true;
        if (word == "--all-4") arguments.all4 = true;
    }
    if (command.needs && arguments.words.empty())
        throw UsageFault(std::string(command.name) + " needs " + command.needs);
    return arguments;
}

int runCommand(const std::vector<std::string>& words) {
    if (words.empty()) throw UsageFault("a command is missing");
    if (std::find(words.begin(), words.end(), "--help") != words.end() || words[0] == "help") {
        writeStandardOutput(help);
        return 0;
    }
    const auto command = std::find_if(std::begin(commands), std::end(commands),
                                      [&](const Command& known) { return known.name == words[0]; });
    if (command == std::end(commands)) throw UsageFault("there is no command " + words[0]);
    return command->run(parse(*command, words));
}

}  // namespace

}  // namespace valku

int main(int argc, char** argv) {
    using namespace valku;
    initChessTables();
    initIndexLayouts();
    try {
        return runCommand({argv + 1, argv + argc});
    } catch (const UsageFault& fault) {
        writeErrorOutput("valku-tables: " + fault.text() + "; --help tells how it is used\n");
        return 2;
    } catch (const Fault& fault) {
        return reportFault(fault.text());
    } catch (const std::bad_alloc&) {
        return reportFault("valku-tables: the memory does not suffice");
    }
}
