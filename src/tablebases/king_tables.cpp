#include "tablebases/king_tables.h"

#include <algorithm>
#include <cstdlib>

namespace valku {

KingPairs kingPairPawnless{};
KingPairs kingPairPawn{};
u8 slot[slotTypes][tbSquares][tbSquares];
u8 slotCount[slotTypes][tbSquares];
u8 squareOfSlot[slotTypes][tbSquares][tbSquares];

namespace {

int fileDistance(u8 a, u8 b) {
    return std::abs(file64(a) - file64(b));
}
int rankDistance(u8 a, u8 b) {
    return std::abs(rank64(a) - rank64(b));
}

template <class Folded>
void fillKingPairs(KingPairs& pairs, Folded isFolded) {
    for (u8 own = 0; own < tbSquares; ++own) {
        for (u8 other = 0; other < tbSquares; ++other) {
            const bool apart = std::max(fileDistance(own, other), rankDistance(own, other)) > 1;
            pairs.number[own][other] = noKingPair;
            if (!apart || !isFolded(own, other)) continue;
            pairs.number[own][other] = static_cast<u16>(pairs.squares.size());
            pairs.squares.push_back({own, other});
        }
    }
}

// A check by a man that has no square between itself and the king, or by a knight.
bool givesContactCheck(u8 type, u8 square, u8 king) {
    const int files = fileDistance(square, king);
    const int ranks = rankDistance(square, king);
    switch (type) {
        case movingPawn:
            return rank64(king) == rank64(square) + 1 && files == 1;
        case knightSlot:
            return files * ranks == 2;
        case bishopSlot:
            return files == 1 && ranks == 1;
        case rookSlot:
            return files + ranks == 1;
        case queenSlot:
            return std::max(files, ranks) == 1;
        default:
            return false;
    }
}

bool mayStand(u8 type, u8 square, u8 king) {
    const bool isPawn = type == plainPawn || type == movingPawn;
    if (isPawn && (rank64(square) == 0 || rank64(square) == 7)) return false;
    return square != king && !givesContactCheck(type, square, king);
}

void fillSlots() {
    for (u8 type = 0; type < slotTypes; ++type) {
        for (u8 king = 0; king < tbSquares; ++king) {
            u8& count = slotCount[type][king];
            for (u8 square = 0; square < tbSquares; ++square) {
                slot[type][king][square] = noSlot;
                if (!mayStand(type, square, king)) continue;
                squareOfSlot[type][king][count] = square;
                slot[type][king][square] = count++;
            }
        }
    }
}

}  // namespace

void initKingTables() {
    fillKingPairs(kingPairPawnless, isFoldedPawnless);
    fillKingPairs(kingPairPawn, [](u8 own, u8) { return foldFile(own) == 0; });
    fillSlots();
}

}  // namespace valku
