#pragma once

#include <functional>

// Work that another thread has the searching thread do between two nodes: the working memory of the search is
// the searching thread's alone. The search goes on as if nothing had been.

namespace valku {

// Has `work` done by the thread that searches, at its next look at the stop word, and waits for it. The work
// finds searchPosition and the mobility of the root free for its own use. False, and nothing has been done,
// if `isSearching` says that nobody will look at it any more. One caller at a time, which is the thread that
// reads the commands.
bool doBetweenNodes(const std::function<void()>& work, bool (*isSearching)());

}  // namespace valku
