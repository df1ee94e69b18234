#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "chess/types.h"
#include "tablebases/compressed_header.h"

// The material classes that have a table, and what this process has found of each on disk.
//
// A class is named by its men: k and the men of the first side, k and the men of the second, strongest first,
// as in kqkr. The opposite colouring is the same class with a negative number.

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

// One file of a table. The cache (table_cache.h) opens it and keeps the stream.
struct TbFile {
    std::string name;                        // path; empty = no file
    std::unique_ptr<DecodeInfo> decodeInfo;  // null for a plain file
};

// Sides are 0, the first-named, and 1. The tables of a symmetric class are those of side 0.
struct TbClass {
    i32 id;  // its index in classTable
    u32 flags;
    std::string name;
    u8 men[2][tbTypes];            // by side, the king left out
    u64 positions[2];              // entries of the table, by the side to move; 0 for kk
    std::vector<TbFile> files[2];  // by the side to move; as many as the table has parts

    bool has(TbFlag flag) const { return (flags & flag) != 0; }
    // The side whose files hold the table of `side` to move.
    int fileSide(int side) const { return has(tbSymmetric) ? 0 : side; }
    int menCount() const { return static_cast<int>(name.size()); }
    bool hasPieces() const { return name.find_first_not_of("kp") != std::string::npos; }
    bool hasPawns(int side) const { return men[side][tbPawn] != 0; }
    // Bytes of an entry.
    u64 entrySize() const { return has(tbTwoByte) ? 2 : 1; }
};

// By class number: 0 is kk, then 3, 4, 5 and 6 men. Filled by initTableClasses.
extern TbClass classTable[tbClassCount];

// Fills classTable once; further calls do nothing.
void initTableClasses();

// The number of a class by its name, -1 if there is none.
int classByName(std::string_view name);

// Men of the largest class up to this class number; 0 for kk.
constexpr int menOfClass(int tbClass) {
    if (tbClass >= firstSixMenClass) return 6;
    if (tbClass >= firstFiveMenClass) return 5;
    if (tbClass >= firstFourMenClass) return 4;
    return tbClass > 0 ? 3 : 0;
}

}  // namespace valku
