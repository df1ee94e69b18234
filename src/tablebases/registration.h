#pragma once

#include <string>

#include "chess/types.h"

// Looks for table files. A file that is there but does not fit ends the process with status 1 and a line on
// standard output.

namespace valku {

// The directories of the tables, which commas or semicolons part; set with settings.ini and the option
// NalimovPath.
extern std::string TBPath;

// Of the last initTablebases.
extern i32 filesTried;
extern i32 filesOpened;
extern i32 compressedFiles;
extern i64 tbMemoryUsed;  // bytes of decode information

extern bool tbVerbose;  // tell on standard output what is found

// Forgets all files and looks for others in the directories of `path`, which commas or semicolons part. An
// empty element is the current directory. Returns the men of the largest class found, 0 for none.
int initTablebases(const std::string& path);

// The same, and makes the cache if there are tables. Sets largestTbMen. Only while no search runs.
void tbStartUp(const std::string& path);

// Closes and forgets all files.
void forgetTablebases();

// True if at least the first part of the table is there, in this directory or in one before it.
bool registerClassSide(const std::string& directory, int tbClass, int side);

bool registerFile(const std::string& directory, int tbClass, int side, int part);

}  // namespace valku
