#include "thinking/main_line.h"

#include <algorithm>
#include <vector>

#include "platform/clock.h"
#include "search/upward_calls.h"
#include "thinking/search_observer.h"

namespace valku {

namespace {

std::vector<Line> finishedLines;

void noteTime() {
    elapsedSeconds = steadySeconds() - startTime;
}

}  // namespace

void beginMainLine() {
    startTime = steadySeconds();
    elapsedSeconds = 0;
    finishedLines.clear();
    mainLine = Line{};
}

void sendMainLine(i32 depth, Move move, i32 score, const Line& line, bool failHigh) {
    noteTime();
    lastScore = score;
    lastDepth = depth;
    searchObserver->mainLineFound(depth, score, line, failHigh);
    bestMove = move;
    mainLine = line;
}

void rememberFinishedLine() {
    finishedLines.push_back(mainLine);
    noteTime();
}

const Line* findFinishedLine(Move firstMove) {
    const auto line = std::find_if(finishedLines.rbegin(), finishedLines.rend(), [&](const Line& candidate) {
        return candidate.moves[0] == firstMove && candidate.moves[1] != nullMove;
    });
    return line == finishedLines.rend() ? nullptr : &*line;
}

}  // namespace valku
