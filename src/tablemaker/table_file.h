#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chess/types.h"

// Names, lengths and contents of table files.

namespace valku {

// A file that holds one side's table of a class.
struct TableFile {
    std::string path;
    int tbClass = 0;
    int side = 0;
    bool compressed = false;
};

// What the name of a file says, in any of the forms in which tables are named. Throws a Fault if it is not
// the name of a table.
TableFile tableFileOf(const std::string& path);

// The path at which `generate` puts a table.
std::string tablePath(const std::string& directory, int tbClass, int side, bool compressed);

// The file of a table in a directory, plain before compressed.
std::optional<TableFile> findTable(const std::string& directory, int tbClass, int side);

// Throws a Fault if the file cannot be read, or is plain and has not the length of its table.
void checkTableLength(const TableFile& file);

// The plain bytes of a table. Throws a Fault if the file cannot be read or its table has not the length of
// its class.
std::vector<u8> readTable(const TableFile& file);

// Writes a file that appears under its name only when it is whole. Throws a Fault if it cannot be written.
void writeWhole(const std::string& path, const std::vector<u8>& bytes);

}  // namespace valku
