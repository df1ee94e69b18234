#pragma once

// Commands that keep the thread that reads the commands busy for long. While one is at work, `?`, `stop`,
// `quit` and the end of the input end it, if they come after its begin: what has been there before is a
// script, which waits for its turn. All lines keep their turn, so that `quit` takes effect by itself
// afterwards.

namespace valku {

// Stands while such a command works. Only on the thread that reads the commands, and one at a time.
class LongCommand {
  public:
    LongCommand();
    LongCommand(const LongCommand&) = delete;
    LongCommand& operator=(const LongCommand&) = delete;
    ~LongCommand();
};

// True if the work is to end with what it has so far; also if the process is about to end. To be asked
// between any two steps; never waits.
bool commandStopped();

}  // namespace valku
