#pragma once

namespace valku {

// The process's one stream of random numbers: `ran1` of Numerical Recipes (Park and Miller's minimal standard
// generator behind a Bays-Durham shuffle), seeded with 1 on the first call. The keys take its first values,
// the shuffling of moves the ones after them. Above 0 and at most 0.99999988. One thread at a time.
double nextRandom();

}  // namespace valku
