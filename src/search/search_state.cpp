#include "search/search_state.h"

#include "search/stop_word.h"

namespace valku {

std::atomic<u32> stopWord{0};

SearchFrame searchFrames[frameCount];
u64 nodeCount = 0;
i32 selDepth = 0;
i32 tbProbes = 0;
i32 tbHits = 0;
i32 maxCompensation = 120;

}  // namespace valku
