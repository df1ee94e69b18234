#pragma once

#include <atomic>

#include "chess/types.h"

// The word by which other threads reach a running search: every node reads it.

namespace valku {

// The reasons to stop, one byte each. Any thread may set and clear them.
enum StopByte : u32 {
    stopFromOutside = 0x000000FF,  // the stop commands and the time limit: the whole search ends
    stopRootProcess = 0x0000FF00,  // the root search process has lost a race
    stopStandardProcess = 0x00FF0000,
};

inline std::atomic<u32> stopWord{0};

// No reason to stop: the command thread waits in doBetweenNodes().
constexpr u32 searchInterrupt = 0xFF000000;

// Runs the work that doBetweenNodes() was given. On the searching thread.
[[gnu::cold]] void serveInterrupt();

// Leaves interrupts alone: for the middle of a node.
inline bool isStopWanted() {
    return (stopWord.load(std::memory_order_relaxed) & ~searchInterrupt) != 0;
}

// Serves interrupts: between nodes, on the searching thread.
inline bool searchStopped() {
    if (stopWord.load(std::memory_order_relaxed) == 0) [[likely]]
        return false;
    if (isStopWanted()) return true;
    serveInterrupt();
    return false;
}

// The whole search ends, not only one racer.
inline bool stopSignalOutside() {
    return (stopWord.load(std::memory_order_acquire) & stopFromOutside) != 0;
}

inline void setStop(StopByte reason) {
    stopWord.fetch_or(reason, std::memory_order_acq_rel);
}
inline void clearStop(StopByte reason) {
    stopWord.fetch_and(~static_cast<u32>(reason), std::memory_order_acq_rel);
}
inline void clearAllStops() {
    stopWord.store(0, std::memory_order_release);
}

}  // namespace valku
