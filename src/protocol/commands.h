#pragma once

#include <span>
#include <string>

#include "protocol/command.h"

namespace valku {

// The commands of the tools, which stand above this folder. They are searched after those of this folder and
// before the moves. Called at start-up, before the first line.
void useToolCommands(std::span<const Command> commands);

// Carries a line out. One chain of comparisons serves all protocols and roles; the first word that fits ends
// it, and a line that fits none is passed over in silence. Returns when the line is finished. Called by the
// thread that reads the commands.
// A process other than the root serves a caller that it does not trust: it carries out the words of a search
// and refuses all others. The first refusal is reported on standard error.
void dispatch(const std::string& line);

// Logs how many lines were refused.
void noteRefusedLines();

}  // namespace valku
