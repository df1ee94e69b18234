#include "tablemaker/attack_sets.h"

#include "chess/steps.h"

namespace valku {

namespace {

template <std::size_t count>
u64 walk(const int (&steps)[count], int from, bool slides, u64 occupied) {
    u64 squares = 0;
    for (const int step : steps) {
        for (int at = makeSquare(file64(from), rank64(from)) + step; onBoard(at); at += step) {
            const u64 bit = bitOf(rankOf(at) * 8 + fileOf(at));
            squares |= bit;
            if (!slides || occupied & bit) break;
        }
    }
    return squares;
}

}  // namespace

u64 kingAttacks(int from) {
    return walk(Steps<White>::king, from, false, 0);
}

u64 pawnAttacks(int side, int from) {
    constexpr int captures[2][2] = {{15, 17}, {-17, -15}};
    return walk(captures[side], from, false, 0);
}

u64 pieceAttacks(TbType type, int from, u64 occupied) {
    if (type == tbKnight) return walk(Steps<White>::knight, from, false, 0);
    const u64 diagonal = type != tbRook ? walk(Steps<White>::bishop, from, true, occupied) : 0;
    const u64 straight = type != tbBishop ? walk(Steps<White>::rook, from, true, occupied) : 0;
    return diagonal | straight;
}

}  // namespace valku
