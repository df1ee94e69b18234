#include "tablebases/class_lookup.h"

#include <algorithm>
#include <unordered_map>

namespace valku {

namespace {

std::unordered_map<u32, int> classOfKey;

constexpr u32 bitsOfCount = 2;  // no class has more than three men of a type
constexpr u32 noKey = ~0U;

u32 keyOf(const MaterialCounts& counts) {
    u32 key = 0;
    for (const u8 count : counts) {
        if (count >> bitsOfCount != 0) return noKey;
        key = key << bitsOfCount | count;
    }
    return key;
}

void enter(const TbClass& tbClass, int firstSide, int number) {
    MaterialCounts counts;
    const auto middle = std::ranges::copy(tbClass.men[firstSide], counts.begin()).out;
    std::ranges::copy(tbClass.men[1 - firstSide], middle);
    classOfKey[keyOf(counts)] = number;
}

}  // namespace

int classOfMaterial(const MaterialCounts& counts) {
    const auto found = classOfKey.find(keyOf(counts));
    return found == classOfKey.end() ? 0 : found->second;
}

void registerMaterial(const TbClass& tbClass) {
    enter(tbClass, 0, tbClass.id);
    if (!tbClass.has(tbSymmetric)) enter(tbClass, 1, -tbClass.id);
}

void clearMaterial() {
    classOfKey.clear();
}

}  // namespace valku
