#pragma once

#include <atomic>

#include "chess/types.h"

// The reasons to stop a search, one byte each of a word that every node reads. Any thread may set them.

namespace valku {

enum StopByte : u32 {
    stopFromOutside = 0x000000FF,  // the stop commands and the time limit: the whole search ends
    stopRootProcess = 0x0000FF00,  // the root search process loses a race
    stopStandardProcess = 0x00FF0000,
};

extern std::atomic<u32> stopWord;

// No reason to stop: another thread wants the searching one to do something between two nodes.
constexpr u32 searchInterrupt = 0xFF000000;

// Does what is wanted; on the searching thread.
[[gnu::cold]] void serveInterrupt();

// Without a look at interrupts: for places in the middle of a node.
inline bool isStopWanted() {
    return (stopWord.load(std::memory_order_relaxed) & ~searchInterrupt) != 0;
}

// Between nodes, on the searching thread.
inline bool searchStopped() {
    if (stopWord.load(std::memory_order_relaxed) == 0) [[likely]]
        return false;
    if (isStopWanted()) return true;
    serveInterrupt();
    return false;
}

// A stop of the whole search, as against the stop of one racer.
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
