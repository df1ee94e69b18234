#pragma once

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "chess/types.h"

namespace valku {

// Calls use(i) for every i below `count`, on `threads` threads, in rising order on each. Returns when all
// calls have. `use` must not throw.
template <class Use>
void parallelFor(int threads, u32 count, Use use) {
    std::atomic<u32> next{0};
    const auto work = [&] {
        for (u32 i = next++; i < count; i = next++) use(i);
    };
    std::vector<std::jthread> helpers;
    for (int i = 1; i < threads; ++i) helpers.emplace_back(work);
    work();
}

}  // namespace valku
