#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "chess/types.h"
#include "tablebases/compressed_file.h"

// The material classes that have a table, and the files that this process has found of each.
//
// A class is named by its men: k and the other men of the first side, k and those of the second, strongest
// first, as in kqkr. With the colors exchanged it is the same class, under its negative number.

namespace valku {

constexpr int tbClassCount = 441;
constexpr int firstFourMenClass = 6;
constexpr int firstFiveMenClass = 36;
constexpr int firstSixMenClass = 146;

enum TbFlag : u32 {
    tbSymmetric = 1,  // both sides hold the same men: one table, side 0, serves both
    tbTwoByte = 2,    // an entry is two bytes, low byte first; else one signed byte
    tbMultiPart = 4,  // cut into files of tbPartBytes
};

constexpr u64 tbPartBytes = u64{1} << 31;
constexpr int tbMaxParts = 18;

// The types of men but the king, in the order in which men are counted and listed.
enum TbType : int { tbPawn, tbKnight, tbBishop, tbRook, tbQueen, tbTypes };

constexpr std::string_view tbLetters = "pnbrq";

// The squares (board64.h) of one side's men: three places each for pawns, knights, bishops, rooks and queens,
// then the king. Men of a type stand in any order; unused places hold 0.
using TbMen = std::array<u8, 16>;
constexpr int tbPlacesOfType = 3;
constexpr int tbKingPlace = 15;

// One file of a table. Its stream is the cache's (table_cache.h).
struct TbFile {
    std::string name;                        // path; empty = no file
    std::unique_ptr<DecodeInfo> decodeInfo;  // null for a plain file
};

// Sides are 0, the first-named, and 1. Everything but `files` is fixed once initMaterialClasses has run.
// `files` is written at registration, and by the cache for a file that fails: on the searching thread, or the
// only one.
struct TbClass {
    i32 id;  // its index in classTable
    u32 flags;
    std::string name;
    u8 men[2][tbTypes];            // by side, without the king
    u64 positions[2];              // entries of the table, by the side to move; 0 for kk
    std::vector<TbFile> files[2];  // by the side to move, then part; none for side 1 of a symmetric class

    bool has(TbFlag flag) const { return (flags & flag) != 0; }
    // The side whose files hold the table of `side` to move.
    int fileSide(int side) const { return has(tbSymmetric) ? 0 : side; }
    int menCount() const { return static_cast<int>(name.size()); }
    bool hasPieces() const { return name.find_first_not_of("kp") != std::string::npos; }
    bool hasPawns(int side) const { return men[side][tbPawn] != 0; }
    bool hasPawns() const { return hasPawns(0) || hasPawns(1); }
    bool hasPawnsOnBothSides() const { return hasPawns(0) && hasPawns(1); }
    // Bytes of an entry.
    u64 entrySize() const { return has(tbTwoByte) ? 2 : 1; }
};

// By class number: 0 is kk, then 3, 4, 5 and 6 men.
extern TbClass classTable[tbClassCount];

// Fills classTable once; further calls do nothing.
void initMaterialClasses();

// The number of a class by its name, -1 if there is none.
int classByName(std::string_view name);

// Men of a class, kings included; 0 for kk.
constexpr int menOfClass(int tbClass) {
    if (tbClass >= firstSixMenClass) return 6;
    if (tbClass >= firstFiveMenClass) return 5;
    if (tbClass >= firstFourMenClass) return 4;
    return tbClass > 0 ? 3 : 0;
}

// White pawns, knights, bishops, rooks and queens, then Black's.
using MaterialCounts = std::array<u8, 2 * tbTypes>;

// The class if White holds the first-named side's men, its negative if Black does, 0 if no such class is
// registered. kpkp, where both sides hold the same men but each has a table, is always found as its negative.
// Any thread may call it while none registers files.
int classOfMaterial(const MaterialCounts& counts);

// Enters a class that has a file.
void registerMaterial(const TbClass& tbClass);

// Forgets all classes.
void clearMaterial();

}  // namespace valku
