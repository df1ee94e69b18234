#include "chess/random.h"

#include <algorithm>

#include "chess/types.h"

namespace valku {

namespace {

constexpr i32 multiplier = 16807;
constexpr i32 modulus = 2147483647;
constexpr i32 schrageQuotient = 127773;
constexpr i32 schrageRest = 2836;
constexpr int shuffleSize = 32;
constexpr i32 shuffleDivisor = 1 + (modulus - 1) / shuffleSize;
constexpr double scale = 4.656612875245797e-10;
constexpr double largest = 0.99999988;

struct Generator {
    i32 seed = 1;
    i32 last = 0;
    i32 shuffle[shuffleSize] = {};

    Generator() {
        for (int discarded = 0; discarded < 8; ++discarded) step();
        for (int cell = shuffleSize - 1; cell >= 0; --cell) shuffle[cell] = step();
        last = shuffle[0];
    }

    // Schrage's method: the product modulo `modulus` without leaving 32 bits.
    i32 step() {
        const i32 quotient = seed / schrageQuotient;
        seed = multiplier * (seed - quotient * schrageQuotient) - schrageRest * quotient;
        if (seed < 0) seed += modulus;
        return seed;
    }

    double next() {
        const i32 fresh = step();
        const i32 cell = last / shuffleDivisor;
        last = shuffle[cell];
        shuffle[cell] = fresh;
        return std::min(last * scale, largest);
    }
};

}  // namespace

double nextRandom() {
    static Generator generator;
    return generator.next();
}

}  // namespace valku
