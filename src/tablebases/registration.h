#pragma once

#include <string>

#include "chess/types.h"

// Looks for the files of tables.

namespace valku {

// The directories of the tables, separated by commas or semicolons; an empty element is the current
// directory. From settings.ini and the option NalimovPath.
extern std::string TBPath;

// Of the last initTablebases.
extern i32 filesTried;
extern i32 filesOpened;
extern i32 compressedFiles;
extern i64 tbMemoryUsed;  // bytes of decode information

extern bool tbVerbose;  // report on standard output what is found

// Forgets all files and looks for others in the directories of `path`; a file in an earlier directory wins.
// Returns the men of the largest class found, kings included, 0 for none. Throws a Fault if a file is there
// but does not fit its table, with the line that standard output gets before the process ends with code 1.
// For the searching thread, or another one while no search runs.
int initTablebases(const std::string& path);

// The same, and makes the cache if there are tables. Sets largestTbMen.
void tbStartUp(const std::string& path);

// Closes and forgets all files. On the same threads.
void forgetTablebases();

}  // namespace valku
