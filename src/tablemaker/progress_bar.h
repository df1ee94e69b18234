#pragma once

#include <string>

namespace valku {

// The progress of long work and an estimate of the time left, in one line on standard error that is rewritten
// in place. Shows nothing where standard error is no terminal. For one thread at a time.
class ProgressBar {
  public:
    ProgressBar();
    ~ProgressBar() { clear(); }

    // The part of the work that is done, 0 to 1, and what is being worked on.
    void show(double done, const std::string& what);

    // Erases the line, for other output.
    void clear();

  private:
    bool visible;
    double startTime;
    double lastTime = 0;
    std::size_t width = 0;
};

}  // namespace valku
