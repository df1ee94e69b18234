#pragma once

// Commands that occupy the thread that reads the commands for long. `?`, `stop`, `quit` and the end of the
// input end such a command if they arrive after it has begun; what was there before is a script, which waits
// for its turn. The lines are only looked at, not consumed, so that a `quit` still takes effect afterwards.

namespace valku {

// Exists while such a command runs. Only on the thread that reads the commands, and one at a time.
class LongCommand {
  public:
    LongCommand();
    LongCommand(const LongCommand&) = delete;
    LongCommand& operator=(const LongCommand&) = delete;
    ~LongCommand();
};

// True if the command should stop with what it has so far; also if the process is about to end. Cheap enough
// to be asked between any two steps; never waits. Only on the thread that reads the commands.
bool commandStopped();

}  // namespace valku
