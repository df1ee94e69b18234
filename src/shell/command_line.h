#pragma once

#include <string>

#include "chess/types.h"
#include "distributed/process_role.h"

namespace valku {

// What the arguments of the command line say.
struct CommandLine {
    std::string programPath;
    ProcessRole role;
    bool fixesProtocol = false;  // any argument at all: UCI, without identification
    bool shareHash = false;      // the table of `tableId` is to be opened rather than created
    i32 tableId = -1;
    i64 buckets = 0;
    u16 port = 0;
    bool printsSettings =
        false;  // the whole command line is --settings: print the tables of settings and options
};

// Numbers are read leniently: a missing one, or text that is no number, is 0. Unknown words only fix the
// protocol.
CommandLine parseCommandLine(int argc, char** argv);

// Puts what was read where the engine looks for it.
void applyCommandLine(const CommandLine& commandLine);

}  // namespace valku
