#include "tablemaker/progress_bar.h"

#include <algorithm>

#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/raw_io.h"

namespace valku {

namespace {

constexpr double secondsBetweenLines = 0.2;
constexpr double leastDone = 0.005;  // for an estimate of the time left
constexpr std::size_t cells = 30;

std::string timeLeft(double elapsed, double done) {
    if (done < leastDone) return "";
    const auto seconds = static_cast<int>(elapsed * (1 - done) / done + 0.5);
    return formatText("  %d:%02d left", seconds / 60, seconds % 60);
}

}  // namespace

ProgressBar::ProgressBar() : visible(errorOutputIsTerminal()), startTime(steadySeconds()) {}

void ProgressBar::show(double done, const std::string& what) {
    const double now = steadySeconds();
    if (!visible || now - lastTime < secondsBetweenLines) return;
    lastTime = now;
    done = std::clamp(done, 0.0, 1.0);
    const auto full = static_cast<std::size_t>(done * static_cast<double>(cells));
    std::string line = "[" + std::string(full, '#') + std::string(cells - full, '.') + "] " +
                       std::to_string(static_cast<int>(done * 100)) + " %  " + what +
                       timeLeft(now - startTime, done);
    const std::size_t shown = line.size();
    if (shown < width) line.append(width - shown, ' ');
    width = shown;
    writeErrorOutput("\r" + line);
}

void ProgressBar::clear() {
    if (width) writeErrorOutput("\r" + std::string(width, ' ') + "\r");
    width = 0;
}

}  // namespace valku
