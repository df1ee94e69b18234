#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tablemaker/ending.h"

namespace valku {

// A file that holds one side's table of a class.
struct TableFile {
    std::string path;
    int tbClass = 0;
    int side = 0;
    bool compressed = false;
};

// What the name of a file says, in any of the forms in which tables are named; nothing if it is no table's
// name.
std::optional<TableFile> tableFileOf(const std::string& path);

// The path at which `generate` puts a table.
std::string tablePath(const std::string& directory, int tbClass, int side, bool compressed);

// The file of a table in a directory, plain before compressed.
std::optional<TableFile> findTable(const std::string& directory, int tbClass, int side);

// False, and a line in `error`, if the file cannot be read or is plain and has not the length of its table.
bool hasTableLength(const TableFile& file, std::string& error);

// The plain bytes of a table, which has the length of its class. False, and a line in `error`, if there is
// none.
bool readTable(const TableFile& file, std::vector<u8>& bytes, std::string& error);

// Writes a file that appears under its name only when it is whole.
bool writeWhole(const std::string& path, const std::vector<u8>& bytes);

// The table of one side to move of a solved ending. Numbers that stand for no legal position hold
// unusedTableByte, and so does the tail for positions with a right to capture en passant.
std::vector<u8> tableOfEnding(const Ending& ending, int side, int threads);

// The states of an ending from the table of one side to move.
void fillFromTable(Ending& ending, int side, const std::vector<u8>& bytes, int threads);

}  // namespace valku
