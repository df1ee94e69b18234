#include "tablemaker/ending.h"

#include <atomic>
#include <string>

#include "tablebases/position_index.h"
#include "tablemaker/attack_sets.h"
#include "tablemaker/parallel_for.h"

namespace valku {

namespace {

constexpr std::array<SquareMap, 8> allSymmetries() {
    std::array<SquareMap, 8> maps{};
    for (u32 symmetry = 0; symmetry < 8; ++symmetry) {
        for (u32 square = 0; square < 64; ++square) {
            const auto image =
                static_cast<u8>(square ^ (symmetry & 1 ? mirrorFiles : 0) ^ (symmetry & 2 ? mirrorRanks : 0));
            maps[symmetry][square] = symmetry & 4 ? transposeSquare(image) : image;
        }
    }
    return maps;
}

constexpr std::array<SquareMap, 8> symmetricSquares = allSymmetries();

const EndingKings& kingsOfClass(int tbClass) {
    static const EndingKings withPawns(2), withoutPawns(8);
    return classTable[tbClass].hasPawns() ? withPawns : withoutPawns;
}

void fillMen(const EndingMaterial& material, const Placement& p, TbMen (&lists)[2]) {
    int placed[2][tbTypes]{};
    for (const int side : {0, 1}) lists[side][tbKingPlace] = p.kings[side];
    for (int man = 0; man < material.count; ++man) {
        const int side = material.side[man], type = material.type[man];
        lists[side][static_cast<std::size_t>(3 * type + placed[side][type]++)] = p.men[man];
    }
}

// Calls use(index in the ending, index in the table) for every legal position.
template <class Use>
void forEachLegal(const Ending& ending, int side, int threads, Use use) {
    const int tbClass = ending.tbClass;
    parallelFor(threads, ending.pairCount(), [&](u32 pair) {
        const u32 begin = pair * ending.pairSize();
        for (u32 index = begin; index < begin + ending.pairSize(); ++index) {
            if (ending.states[side][index] == stateIllegal) continue;
            TbMen lists[2]{};
            fillMen(ending.material, ending.placementOf(index), lists);
            use(index, tableIndex(tbClass, side, lists[0], lists[1], false));
        }
    });
}

}  // namespace

EndingMaterial materialOfClass(int tbClass) {
    EndingMaterial material;
    for (const int side : {0, 1}) {
        for (int type = tbQueen; type >= tbPawn; --type) {
            for (int i = 0; i < classTable[tbClass].men[side][type]; ++i) {
                material.type[material.count] = static_cast<TbType>(type);
                material.side[material.count++] = side;
            }
        }
    }
    return material;
}

std::vector<MaterialChange> changesOf(const EndingMaterial& material) {
    std::vector<MaterialChange> changes;
    for (int captured = 0; captured < material.count; ++captured) changes.push_back({captured, -1, tbPawn});
    for (int pawn = 0; pawn < material.count; ++pawn) {
        if (material.type[pawn] != tbPawn) continue;
        for (int captured = -1; captured < material.count; ++captured) {
            if (captured >= 0 && material.side[captured] == material.side[pawn]) continue;
            for (const TbType type : {tbKnight, tbBishop, tbRook, tbQueen})
                changes.push_back({captured, pawn, type});
        }
    }
    return changes;
}

std::pair<int, bool> classAfter(const EndingMaterial& material, MaterialChange change) {
    std::string names[2] = {"k", "k"};
    for (int type = tbQueen; type >= tbPawn; --type) {
        for (int man = 0; man < material.count; ++man) {
            if (man == change.captured) continue;
            const TbType manType = man == change.promoted ? change.promotion : material.type[man];
            if (manType == type) names[material.side[man]] += tbLetters[static_cast<std::size_t>(type)];
        }
    }
    const int asNamed = classByName(names[0] + names[1]);
    if (asNamed >= 0) return {asNamed, false};
    return {classByName(names[1] + names[0]), true};
}

EndingKings::EndingKings(int symmetries) {
    for (int first = 0; first < 64; ++first) {
        for (int second = 0; second < 64; ++second) {
            number[first][second] = none;
            if (first == second || kingAttacks(first) & bitOf(second)) continue;
            // The lowest image of the kings stands for all others.
            const auto imageUnder = [&](const SquareMap& map) {
                return std::array{map[static_cast<u32>(first)], map[static_cast<u32>(second)]};
            };
            const SquareMap* best = &symmetricSquares[0];
            const SquareMap* keeping = nullptr;
            for (u32 symmetry = 1; symmetry < static_cast<u32>(symmetries); ++symmetry) {
                const SquareMap& map = symmetricSquares[symmetry];
                if (imageUnder(map) == imageUnder(symmetricSquares[0])) keeping = &map;
                if (imageUnder(map) < imageUnder(*best)) best = &map;
            }
            onto[first][second] = best;
            if (best != &symmetricSquares[0]) {
                const auto [a, b] = imageUnder(*best);
                number[first][second] = number[a][b];
                continue;
            }
            number[first][second] = static_cast<u16>(squares.size());
            squares.push_back(imageUnder(*best));
            mirror.push_back(keeping);
        }
    }
}

i8 tableByteOf(EndingState state) {
    if (state == stateIllegal) return unusedTableByte;
    if (isWin(state)) return static_cast<i8>(127 - distanceOf(state));
    return static_cast<i8>(isLoss(state) ? distanceOf(state) - 126 : 0);
}

EndingState stateOfTableByte(i8 byte) {
    if (byte == unusedTableByte) return stateIllegal;
    if (byte > 0) return winIn(127 - byte);
    return byte < 0 ? lossIn(byte + 126) : stateUnknown;
}

Ending::Ending(int number) : tbClass(number), material(materialOfClass(number)), kings(kingsOfClass(number)) {
    for (auto& ofSide : states) ofSide.resize(std::size_t{pairCount()} * pairSize());
}

Placement Ending::placementOf(u32 index) const {
    Placement p{};
    for (int man = material.count - 1; man >= 0; --man, index >>= 6) p.men[man] = index & 63;
    p.kings[0] = kings.squares[index][0];
    p.kings[1] = kings.squares[index][1];
    return p;
}

void Ending::markIllegal(int sideToMove, u32 pair) {
    const u32 begin = pair * pairSize();
    for (u32 index = begin; index < begin + pairSize(); ++index) {
        const Placement p = placementOf(index);
        const u64 occupied = occupiedSquares(material, p);
        bool legal = std::popcount(occupied) == material.count + 2 &&
                     !attacks(material, p, sideToMove, p.kings[sideToMove ^ 1], occupied);
        for (int man = 0; man < material.count; ++man) {
            if (material.type[man] == tbPawn && (p.men[man] < 8 || p.men[man] >= 56)) legal = false;
        }
        states[sideToMove][index] = legal ? stateUnknown : stateIllegal;
    }
}

u64 occupiedSquares(const EndingMaterial& material, const Placement& p) {
    u64 occupied = bitOf(p.kings[0]) | bitOf(p.kings[1]);
    for (int man = 0; man < material.count; ++man) occupied |= bitOf(p.men[man]);
    return occupied;
}

bool attacks(const EndingMaterial& material, const Placement& p, int side, int square, u64 occupied) {
    for (int man = 0; man < material.count; ++man) {
        if (material.side[man] != side) continue;
        const u64 attacked = material.type[man] == tbPawn
                                 ? pawnAttacks(side, p.men[man])
                                 : pieceAttacks(material.type[man], p.men[man], occupied);
        if (attacked & bitOf(square)) return true;
    }
    return false;
}

std::vector<u8> tableBytes(const Ending& ending, int side, int threads) {
    const u64 length = classTable[ending.tbClass].positions[side];
    std::vector<u8> bytes(length, static_cast<u8>(unusedTableByte));
    forEachLegal(ending, side, threads, [&](u32 index, u64 entry) {
        // Several threads may write the images of one position, all of them the same byte.
        const auto byte = static_cast<u8>(tableByteOf(ending.states[side][index]));
        std::atomic_ref(bytes[entry]).store(byte, std::memory_order_relaxed);
    });
    return bytes;
}

void readStates(Ending& ending, int side, const std::vector<u8>& bytes, int threads) {
    parallelFor(threads, ending.pairCount(), [&](u32 pair) { ending.markIllegal(side, pair); });
    forEachLegal(ending, side, threads, [&](u32 index, u64 entry) {
        ending.states[side][index] = stateOfTableByte(static_cast<i8>(bytes[entry]));
    });
}

}  // namespace valku
