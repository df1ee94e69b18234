#include "chess/tables.h"

#include "chess/piece_values.h"
#include "chess/random.h"

namespace valku {

u64 squareMask[128];
u64 squareClear[128];
u64 knightAttacks[128];
u64 bishopRays[128];
u64 rookRays[128];
u32 pieceKeyLow[256][128];
u32 pieceKeyHigh[256][128];
u32 epKey[128];
u64 whitePawnKey[128];
u64 blackPawnKey[128];
DifferenceTable directionTable;

namespace {

u32 randomKey() {
    return static_cast<u32>(static_cast<i32>((1 - 2 * nextRandom()) * 2147483648.0));
}

u64 randomPawnKey() {
    const u64 high = static_cast<u64>(nextRandom() * 4294967296.0);
    const u64 low = static_cast<u64>(nextRandom() * 4294967296.0);
    return (high << 32) + low;
}

void initSquareMasks() {
    for (int square = 0; square < 128; ++square) {
        squareMask[square] = u64{1} << (((square >> 1) & ~7) + (square & 15)) % 64;
        squareClear[square] = ~squareMask[square];
    }
}

// The numbers for the border cells of a 10x12 mailbox are generated too and dropped: the key of a square is
// its place in the sequence.
void initKeys() {
    for (int code = 0; code < 256; ++code) {
        for (int cell = 21; cell <= 98; ++cell) {
            const u32 high = randomKey();
            const u32 low = randomKey();
            if (cell % 10 < 1 || cell % 10 > 8) continue;
            const int square = (cell / 10 - 2) * 16 + cell % 10 - 1;
            pieceKeyHigh[code][square] = high;
            pieceKeyLow[code][square] = low;
        }
    }
    for (int square = 0; square < 128; ++square) {
        epKey[square] = randomKey();
        whitePawnKey[square] = randomPawnKey();
        blackPawnKey[square] = randomPawnKey();
    }
}

u64 raysFrom(int square, const int (&steps)[4]) {
    u64 rays = 0;
    for (const int step : steps) {
        for (int target = square + step; onBoard(target); target += step) rays |= squareMask[target];
    }
    return rays;
}

void initAttackMasks() {
    constexpr int diagonalSteps[] = {15, 17, -17, -15};
    constexpr int straightSteps[] = {16, -1, 1, -16};
    constexpr int knightSteps[] = {31, 33, 14, 18, -33, -31, -18, -14};
    for (int square = A1; square <= H8; ++square) {
        if (!onBoard(square)) continue;
        bishopRays[square] = raysFrom(square, diagonalSteps);
        rookRays[square] = raysFrom(square, straightSteps);
        knightAttacks[square] = 0;
        for (const int step : knightSteps) {
            if (onBoard(square + step)) knightAttacks[square] |= squareMask[square + step];
        }
    }
}

int stepOf(int rankDifference, int fileDifference) {
    if (rankDifference == 0 && fileDifference == 0) return 0;
    if (fileDifference == rankDifference) return fileDifference > 0 ? 17 : -17;
    if (fileDifference == -rankDifference) return fileDifference > 0 ? -15 : 15;
    if (rankDifference == 0) return fileDifference > 0 ? 1 : -1;
    if (fileDifference == 0) return rankDifference > 0 ? 16 : -16;
    return 0;
}

void initDirectionTable() {
    for (int rankDifference = -7; rankDifference <= 7; ++rankDifference) {
        for (int fileDifference = -7; fileDifference <= 7; ++fileDifference) {
            directionTable[rankDifference * 16 + fileDifference] = stepOf(rankDifference, fileDifference);
        }
    }
}

}  // namespace

void initChessTables() {
    initSquareMasks();
    initKeys();
    updatePieceValues();
    initAttackMasks();
    initDirectionTable();
}

}  // namespace valku
