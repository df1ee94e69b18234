#pragma once

#include <string>

namespace valku {

// The state of long work and the time it will still take, in one line on standard error that is written over
// again and again. Nothing is shown where standard error is no terminal.
class ProgressBar {
  public:
    ProgressBar();
    ~ProgressBar() { clear(); }

    // The part of the work that is done, 0 to 1, and a word about what is at work.
    void show(double done, const std::string& what);

    // Takes the line away, for other output.
    void clear();

  private:
    bool visible;
    double startTime;
    double lastTime = 0;
    std::size_t width = 0;
};

}  // namespace valku
