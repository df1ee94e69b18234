#pragma once

#include <stdexcept>
#include <string>
#include <vector>

// The commands of the program valku-tables. Each returns the exit code: 0, or 1 if the work failed or a table
// is damaged. Results go to standard output, faults to standard error.

namespace valku {

struct TablesArguments {
    std::vector<std::string> words;  // that are no options: classes, files or positions
    std::string directory = "tables";
    int threads = 1;
    bool compress = false;
    bool all3 = false;
    bool all4 = false;
};

// Thrown at arguments that cannot be understood; the program then ends with exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Makes the tables of the classes, and of those that they rest on, that are not in the directory yet.
int generateTables(const TablesArguments& arguments);

// Holds every entry of the files against the values of the positions that its moves lead to, which are looked
// up in the tables beside the file. Without files, all tables of the directory. Of a damaged file the first
// wrong entry is told.
int verifyTables(const TablesArguments& arguments);

int compressTables(const TablesArguments& arguments);
int expandTables(const TablesArguments& arguments);

// Entries, wins, draws, losses and the longest mate of files.
int tellOfTables(const TablesArguments& arguments);

// Value, distance to mate and best moves of positions.
int probePositions(const TablesArguments& arguments);

// The lengths of all tables, worked out anew, as the lines of tablebases/class_lengths.h.
int tellLengths(const TablesArguments& arguments);

// The whole program: carries out the command that the arguments hold. Returns the exit code.
int runTablesProgram(const std::vector<std::string>& arguments);

}  // namespace valku
