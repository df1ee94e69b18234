#include "tablebases/material_classes.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <unordered_map>

#include "tablebases/table_lengths.h"

namespace valku {

namespace {

// In the order of the class numbers, on which the order of registration and the limits firstFourMenClass to
// firstSixMenClass depend.
constexpr const char* classNames =
    "kk "
    "kpk knk kbk krk kqk "
    "kpkp knkp knkn kbkp kbkn kbkb krkp krkn krkb krkr kqkp kqkn kqkb kqkr kqkq kppk knpk knnk kbpk "
    "kbnk kbbk krpk krnk krbk krrk kqpk kqnk kqbk kqrk kqqk "
    "kppkp kppkn kppkb kppkr kppkq knpkp knpkn knpkb knpkr knpkq knnkp knnkn knnkb knnkr knnkq "
    "kbpkp kbpkn kbpkb kbpkr kbpkq kbnkp kbnkn kbnkb kbnkr kbnkq kbbkp kbbkn kbbkb kbbkr kbbkq "
    "krpkp krpkn krpkb krpkr krpkq krnkp krnkn krnkb krnkr krnkq krbkp krbkn krbkb krbkr krbkq "
    "krrkp krrkn krrkb krrkr krrkq kqpkp kqpkn kqpkb kqpkr kqpkq kqnkp kqnkn kqnkb kqnkr kqnkq "
    "kqbkp kqbkn kqbkb kqbkr kqbkq kqrkp kqrkn kqrkb kqrkr kqrkq kqqkp kqqkn kqqkb kqqkr kqqkq "
    "kpppk knppk knnpk knnnk kbppk kbnpk kbnnk kbbpk kbbnk kbbbk krppk krnpk krnnk krbpk krbnk "
    "krbbk krrpk krrnk krrbk krrrk kqppk kqnpk kqnnk kqbpk kqbnk kqbbk kqrpk kqrnk kqrbk kqrrk "
    "kqqpk kqqnk kqqbk kqqrk kqqqk "
    "knnknn kbnknn kbbknn kbbkbn kbbkbb krnknn krnkbb krbknn krbkbb krrknn krrkbn krrkbb krrkrn "
    "krrkrb krrkrr kqnknn kqnkbb kqnkrr kqbknn kqbkbb kqbkrr kqrknn kqrkbb kqrkrr kqqknn kqqkbn "
    "kqqkbb kqqkrn kqqkrb kqqkrr kqqkqn kqqkqb kqqkqr kqqkqq kbnkbn krnkrn krbkrb kqnkqn kqbkqb "
    "kqrkqr krnkbn krbkbn krbkrn kqnkbn kqnkrn kqnkrb kqbkbn kqbkrn kqbkrb kqbkqn kqrkbn kqrkrn "
    "kqrkrb kqrkqn kqrkqb kppkpp knpkpp knpknp knnkpp knnknp kbpkpp kbpknp kbpknn kbpkbp kbnkpp "
    "kbnknp kbnkbp kbbkpp kbbknp kbbkbp krpkpp krpknp krpknn krpkbp krpkbn krpkbb krpkrp krnkpp "
    "krnknp krnkbp krnkrp krbkpp krbknp krbkbp krbkrp krrkpp krrknp krrkbp krrkrp kqpkpp kqpknp "
    "kqpknn kqpkbp kqpkbn kqpkbb kqpkrp kqpkrn kqpkrb kqpkrr kqpkqp kqnkpp kqnknp kqnkbp kqnkrp "
    "kqnkqp kqbkpp kqbknp kqbkbp kqbkrp kqbkqp kqrkpp kqrknp kqrkbp kqrkrp kqrkqp kqqkpp kqqknp "
    "kqqkbp kqqkrp kqqkqp "
    "knnnkn kbnnkn kbbnkn kbbbkn krnnkn krbbkn krrnkn krrbkn krrrkn kqnnkn kqbbkn kqrrkn kqqnkn "
    "kqqbkn kqqrkn kqqqkn knnnkb kbnnkb kbbnkb kbbbkb krnnkb krbbkb krrnkb krrbkb krrrkb kqnnkb "
    "kqbbkb kqrrkb kqqnkb kqqbkb kqqrkb kqqqkb knnnkr kbnnkr kbbnkr kbbbkr krnnkr krbbkr krrnkr "
    "krrbkr krrrkr kqnnkr kqbbkr kqrrkr kqqnkr kqqbkr kqqrkr kqqqkr knnnkq kbnnkq kbbnkq kbbbkq "
    "krnnkq krbbkq krrnkq krrbkq krrrkq kqnnkq kqbbkq kqrrkq kqqnkq kqqbkq kqqrkq kqqqkq krbnkn "
    "kqbnkn kqrnkn kqrbkn krbnkb kqbnkb kqrnkb kqrbkb krbnkr kqbnkr kqrnkr kqrbkr krbnkq kqbnkq "
    "kqrnkq kqrbkq kpppkp knppkp knnpkp knnnkp kbppkp kbnpkp kbnnkp kbbpkp kbbnkp kbbbkp krppkp "
    "krnpkp krnnkp krbpkp krbnkp krbbkp krrpkp krrnkp krrbkp krrrkp kqppkp kqnpkp kqnnkp kqbpkp "
    "kqbnkp kqbbkp kqrpkp kqrnkp kqrbkp kqrrkp kqqpkp kqqnkp kqqbkp kqqrkp kqqqkp kpppkn knppkn "
    "knnpkn kbppkn kbnpkn kbbpkn krppkn krnpkn krbpkn krrpkn kqppkn kqnpkn kqbpkn kqrpkn kqqpkn "
    "kpppkb knppkb knnpkb kbppkb kbnpkb kbbpkb krppkb krnpkb krbpkb krrpkb kqppkb kqnpkb kqbpkb "
    "kqrpkb kqqpkb kpppkr knppkr knnpkr kbppkr kbnpkr kbbpkr krppkr krnpkr krbpkr krrpkr kqppkr "
    "kqnpkr kqbpkr kqrpkr kqqpkr kpppkq knppkq knnpkq kbppkq kbnpkq kbbpkq krppkq krnpkq krbpkq "
    "krrpkq kqppkq kqnpkq kqbpkq kqrpkq kqqpkq ";

struct FlaggedClasses {
    u32 flags;
    const char* names;
};

// Classes that are not named here have no flag.
constexpr FlaggedClasses flaggedClasses[] = {
    {tbSymmetric,
     "kk knkn kbkb krkr kqkq knnknn kbbkbb krrkrr kqqkqq kbnkbn krnkrn krbkrb kqnkqn kqbkqb "
     "kqrkqr"},
    {tbTwoByte, "krnknn krnkbb krbknn kqnkrr knnkpp krrkpp kpppkp kpppkq"},
    {tbSymmetric | tbTwoByte, "kppkpp"},
    {tbSymmetric | tbMultiPart, "krpkrp"},
    {tbSymmetric | tbTwoByte | tbMultiPart, "knpknp kbpkbp kqpkqp"},
    {tbTwoByte | tbMultiPart,
     "krnkbn knpkpp knnknp kbpkpp kbpknp kbpknn kbnkpp kbnknp kbbknp krpkpp krpknp krpknn "
     "krpkbp krpkbn krpkbb krnkpp krnknp krnkbp krbkpp krbknp krbkbp krrknp kqpkpp kqpkbp "
     "kqpkrp kqpkrb kqpkrr kqnkpp kqnkrp kqnkqp kqbkqp kqrkpp kqrkqp knppkp kbppkp kbnpkp "
     "kbbpkp krppkp krnpkp krbpkp krrpkp kqppkp kqnpkp kqbpkp kbppkr kbnpkr kbbpkr knppkq "
     "kbppkq kbnpkq kbbpkq krppkq krnpkq krbpkq krrpkq kqppkq kqnpkq kqbpkq kqrpkq"},
    {tbMultiPart,
     "krbkbn kqnkrn kqnkrb kqbkrn kqbkrb kbnkbp kbbkbp krnkrp krbkrp krrkbp krrkrp kqpknp "
     "kqpknn kqpkbn kqpkbb kqpkrn kqnknp kqnkbp kqbkpp kqbknp kqbkbp kqbkrp kqrknp kqrkbp "
     "kqrkrp kqqknp kqqkbp kqqkrp kqqkqp kqbnkq knnpkp kbnnkp kbbnkp krnnkp krbnkp krbbkp "
     "krrnkp krrbkp kqnnkp kqbnkp kqbbkp kqrpkp kqrnkp kqrbkp kqrrkp kqqpkp kqqnkp kqqbkp "
     "kqqrkp knppkn knnpkn kbppkn kbnpkn kbbpkn krppkn krnpkn krbpkn krrpkn kqppkn kqnpkn "
     "kqbpkn kqrpkn kqqpkn knppkb knnpkb kbppkb kbnpkb kbbpkb krppkb krnpkb krbpkb krrpkb "
     "kqppkb kqnpkb kqbpkb kqrpkb kqqpkb knppkr knnpkr krppkr krnpkr krbpkr krrpkr kqppkr "
     "kqnpkr kqbpkr kqrpkr kqqpkr knnpkq kqqpkq"},
};

template <class Use>
void forEachWord(const char* words, Use use) {
    std::istringstream stream(words);
    for (std::istream_iterator<std::string> word(stream), end; word != end; ++word) use(*word);
}

void countMen(TbClass& tbClass) {
    int side = -1;
    for (const char letter : tbClass.name) {
        if (letter == 'k') {
            ++side;
        } else {
            ++tbClass.men[side][tbLetters.find(letter)];
        }
    }
}

u32 partsOf(const TbClass& tbClass, int side) {
    if (!tbClass.has(tbMultiPart)) return 1;
    return static_cast<u32>(tbClass.positions[side] * tbClass.entrySize() / tbPartBytes + 1);
}

void fillClassTable() {
    int number = 0;
    forEachWord(classNames, [&](const std::string& name) {
        TbClass& tbClass = classTable[number];
        tbClass.id = number++;
        tbClass.name = name;
        countMen(tbClass);
    });
    for (const FlaggedClasses& flagged : flaggedClasses) {
        forEachWord(flagged.names,
                    [&](const std::string& name) { classTable[classByName(name)].flags = flagged.flags; });
    }
    for (TbClass& tbClass : classTable) {
        for (const int side : {0, 1}) {
            tbClass.positions[side] = classLengths[tbClass.id][side];
            if (tbClass.fileSide(side) == side) tbClass.files[side].resize(partsOf(tbClass, side));
        }
    }
}

// By the counts of the registered classes.
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

void enter(const TbClass& tbClass, int white, int number) {
    MaterialCounts counts;
    const auto middle = std::ranges::copy(tbClass.men[white], counts.begin()).out;
    std::ranges::copy(tbClass.men[1 - white], middle);
    classOfKey[keyOf(counts)] = number;
}

}  // namespace

TbClass classTable[tbClassCount];

void initMaterialClasses() {
    [[maybe_unused]] static const bool filled = (fillClassTable(), true);
}

int classByName(std::string_view name) {
    const auto found = std::ranges::find(classTable, name, &TbClass::name);
    return found == std::end(classTable) ? -1 : found->id;
}

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
