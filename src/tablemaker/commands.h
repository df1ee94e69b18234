#pragma once

#include <string>
#include <vector>

#include "platform/fault.h"

// The commands of valku-tables. Each returns the exit code: 0, or 1 if a table is damaged or the work on one
// of several failed. Results go to standard output, faults to standard error. A command throws a Fault if it
// cannot go on.

namespace valku {

struct TablesArguments {
    std::vector<std::string> words;  // other than options: classes, files or positions
    std::string directory = "tables";
    int threads = 1;
    bool compress = false;
    bool all3 = false;
    bool all4 = false;
};

// Arguments that make no sense.
struct UsageFault : Fault {
    using Fault::Fault;
};

// Makes the tables of the classes, and of those that they depend on, that are not in the directory yet.
int generateTables(const TablesArguments& arguments);

// Compares every entry of the files with the values of the positions after its moves, which are looked up in
// the tables of the same directory. Without files, all tables of the directory. Reports the first wrong entry
// of a damaged file.
int verifyTables(const TablesArguments& arguments);

int compressTables(const TablesArguments& arguments);
int expandTables(const TablesArguments& arguments);

// Entries, wins, draws, losses and the longest mate of files.
int reportTables(const TablesArguments& arguments);

// The lengths of all tables, worked out again, as the lines of tablebases/table_lengths.h.
int reportLengths(const TablesArguments& arguments);

// Value, distance to mate and best moves of positions.
int probePositions(const TablesArguments& arguments);

// Reports that the work on one table or position failed. Returns 1, the exit code.
int reportFault(const std::string& text);

// Calls use(item) for every item and reports the Faults that it throws. Returns the exit code.
template <class Items, class Use>
int forEachReportingFaults(const Items& items, Use use) {
    int exitCode = 0;
    for (const auto& item : items) {
        try {
            use(item);
        } catch (const Fault& fault) {
            exitCode = reportFault(fault.text());
        }
    }
    return exitCode;
}

// A distance in words.
std::string movesText(int moves);

// Registers the tables of a directory for probing. False if one does not fit, which is reported as the engine
// does it: on standard output.
bool registerTables(const std::string& directory);

}  // namespace valku
