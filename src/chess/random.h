#pragma once

namespace valku {

// The only sequence of random numbers of a process: ran1 of Numerical Recipes (Park and Miller's minimal
// standard generator with a Bays-Durham shuffle), seeded with 1 on the first call. The Zobrist keys take its
// first numbers, the shuffling of moves the following ones. Above 0 and at most 0.99999988. One thread at a
// time.
double nextRandom();

}  // namespace valku
