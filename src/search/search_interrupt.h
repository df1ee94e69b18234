#pragma once

#include <functional>

namespace valku {

// Has `work` done by the searching thread between two nodes, since only that thread may touch the working
// memory of the search, and waits for it. The work may use searchPosition and the mobility sums of ply 1,
// which are restored afterwards; the search continues unchanged. False, and nothing was done, once
// `isSearching` is false. Command thread only.
bool doBetweenNodes(const std::function<void()>& work, bool (*isSearching)());

}  // namespace valku
