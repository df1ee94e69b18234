#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "tablebases/position_index.h"
#include "tablebases/table_entry.h"
#include "tablebases/table_files.h"

namespace valku {
namespace {

class TableIndex : public TableFiles {};

struct Men {
    TbMen lists[2]{};

    Men changed(const TbClass& tbClass, u8 (*change)(u8 square)) const {
        Men men = *this;
        for (u32 side = 0; side < 2; ++side) {
            for (u32 place = 0; place <= tbKingPlace; ++place) {
                u8& square = men.lists[side][place];
                if (place == tbKingPlace || place % 3 < tbClass.men[side][place / 3]) square = change(square);
            }
        }
        return men;
    }
};

// Lengths known from table files. All lengths in the source are those that the scan finds.
TEST_F(TableIndex, LengthsAreThoseOfTheKnownFiles) {
    std::istringstream known(
        "kpk 81664 84012 knk 26282 28644 kbk 27243 28644 krk 27030 28644 kqk 25629 28644 kpkp 3863492 "
        "3863492 "
        "kqqk 698739 873642 kppkp 84219361 89391280 krpkp 226121876 231758952 kqpkp 214481388 231758952 "
        "kqqqk 12479974 17472840 knnknn 1301488080 1301488080 krbknp 17652988800 16455976740 "
        "kqqpkq 7297961576 8514011520");
    std::string className;
    for (u64 first = 0, second = 0; known >> className >> first >> second;) {
        const auto [white, black] = classTable[classByName(className)].positions;
        EXPECT_EQ(std::pair(white, black), std::pair(first, second)) << className;
    }
    std::size_t mostParts = 0;
    for (const TbClass& tbClass : classTable) {
        for (const int side : {0, 1}) {
            mostParts = std::max(mostParts, tbClass.files[side].size());
            if (tbClass.id == 0) continue;
            EXPECT_EQ(tbClass.positions[side], tableLength(tbClass.id, side)) << tbClass.name;
        }
    }
    for (const auto& [number, name] :
         {std::pair(36, "kppkp"), {110, "kqqkq"}, {146, "knnknn"}, {440, "kqqpkq"}})
        EXPECT_EQ(classTable[number].name, name);
    EXPECT_EQ(mostParts, 17U);
}

// The squares of an index have that index again, reflected too: left to right, top to bottom with the colors
// exchanged, and without pawns in the diagonal, unless both kings stand on it.
TEST_F(TableIndex, NumbersAndSquaresAreEachOthersReverse) {
    const auto mirrored = [](u8 square) { return static_cast<u8>(square ^ 7); };
    const auto turned = [](u8 square) { return static_cast<u8>(square ^ 56); };
    const auto transposed = [](u8 square) { return static_cast<u8>(square % 8 * 8 + square / 8); };
    std::mt19937_64 random(7);
    for (const TbClass& tbClass : classTable) {
        for (const int side : {0, 1}) {
            const u64 range = indexLayout(tbClass.id, side).range;
            int placements = 0;
            for (int i = 0; i < 40; ++i) {
                const u64 index = i == 0 ? 0 : i == 1 ? range - 1 : random() % range;
                Men men;
                if (!squaresOfIndex(tbClass.id, side, index, men.lists[0], men.lists[1])) continue;
                ++placements;
                const auto expectNumber = [&](const Men& image, bool inverted) {
                    EXPECT_EQ(tableIndex(tbClass.id, side, image.lists[0], image.lists[1], inverted), index)
                        << tbClass.name << " [" << side << "]";
                };
                const Men image = men.changed(tbClass, mirrored);
                expectNumber(men, false);
                expectNumber(image, false);
                expectNumber(image.changed(tbClass, turned), true);
                const bool onDiagonal =
                    men.lists[0][tbKingPlace] % 9 == 0 && men.lists[1][tbKingPlace] % 9 == 0;
                if (!tbClass.hasPawns() && !onDiagonal)
                    expectNumber(image.changed(tbClass, transposed), false);
            }
            EXPECT_GE(placements, 20) << tbClass.name;
            Men men;
            EXPECT_FALSE(squaresOfIndex(tbClass.id, side, range, men.lists[0], men.lists[1]));
        }
    }
}

// Impossible positions have no index, and reading one touches nothing outside of the tables.
TEST_F(TableIndex, RefusesWhatCannotBe) {
    const auto isNumbered = [](const char* name, int side, u8 otherKing, u8 pawn) {
        Men men;  // the first king stands on a1
        men.lists[0][tbRook * tbPlacesOfType] = 20;
        men.lists[1][tbKingPlace] = otherKing;
        men.lists[1][0] = pawn;
        return tableIndex(classByName(name), side, men.lists[0], men.lists[1], false) != noIndex;
    };
    EXPECT_FALSE(isNumbered("krk", 0, 9, 0)) << "kings side by side";
    EXPECT_FALSE(isNumbered("krk", 0, 0, 0)) << "kings on one square";
    EXPECT_FALSE(isNumbered("krk", 0, 28, 0)) << "a contact check";
    EXPECT_TRUE(isNumbered("krk", 0, 36, 0)) << "a check from a distance";
    EXPECT_TRUE(isNumbered("krk", 1, 28, 0)) << "an answer to a check";
    EXPECT_TRUE(isNumbered("krkp", 0, 36, 8));
    EXPECT_FALSE(isNumbered("krkp", 0, 36, 3)) << "a pawn on the first rank";
    EXPECT_FALSE(isNumbered("krkp", 0, 36, 60)) << "a pawn on the last rank";
    EXPECT_FALSE(isNumbered("krkp", 1, 36, 60)) << "a pawn of the side to move there";
}

}  // namespace
}  // namespace valku
