#include "tablebases/probe.h"

#include <algorithm>
#include <array>

#include "chess/side.h"
#include "tablebases/compressed_file.h"
#include "tablebases/material_classes.h"
#include "tablebases/table_cache.h"
#include "tablebases/table_entry.h"

namespace valku {

namespace {

// Entries of kppkp, the second side to move, whose loss takes longer than a byte can hold.
constexpr int classOfLongLosses = 36;
constexpr std::array<u64, 7> longLosses = {56802428, 56811076, 56849992, 56858640,
                                           59592489, 67775659, 71071628};
constexpr i32 longLoss = -32639;

// The value of a one-byte entry: the longer the mate takes, the closer the byte is to 0. -127 and -128
// continue the two scales past -1 and 1.
i32 valueOfByte(i32 byte) {
    switch (byte) {
        case 0:
            return 0;
        case 127:
            return noTableValue;
        case -127:
            return -32640;
        case -128:
            return 32640;
        default:
            return byte > 0 ? byte + 32640 : byte - 32640;
    }
}

template <Color Us>
bool mayCaptureEnPassant(const Position& position) {
    const int ep = position.state->epField;
    if (ep == noEpField) return false;
    using S = Side<Us>;
    return position.board[ep - S::up - 1] == S::pawn || position.board[ep - S::up + 1] == S::pawn;
}

}  // namespace

i32 readTableValue(int tbClass, int side, u64 index) {
    const TbClass& record = classTable[tbClass];
    if (cacheSlots == 0 || index >= record.positions[side]) return noTableValue;
    if (tbClass == classOfLongLosses && side == 1 && std::ranges::binary_search(longLosses, index))
        return longLoss;
    const int fileSide = record.fileSide(side);
    const u64 place = index * record.entrySize();
    const u32 block = static_cast<u32>(place / tableBlockSize);
    const u32 offset = static_cast<u32>(place % tableBlockSize);
    const i32 byte = readTableByte(tbClass, fileSide, block, offset);
    if (byte == noTableByte) return noTableValue;
    if (!record.has(tbTwoByte)) return valueOfByte(byte);
    const i32 high = readTableByte(tbClass, fileSide, block, offset + 1);
    return high == noTableByte ? noTableValue : high * 256 + static_cast<u8>(byte);
}

i32 probeTableValue(const Position& position) {
    const bool whiteToMove = position.sideToMove == White;
    if (whiteToMove ? mayCaptureEnPassant<White>(position) : mayCaptureEnPassant<Black>(position))
        return noTableValue;
    TbEntry entry;
    if (!entryOfPosition(position, entry)) return noTableValue;
    const TbClass& record = classTable[entry.tbClass];
    const std::vector<TbFile>& files = record.files[record.fileSide(entry.side)];
    // The cache finds out whether the part that holds the entry is there.
    if (std::ranges::all_of(files, [](const TbFile& file) { return file.name.empty(); })) return noTableValue;
    return readTableValue(entry.tbClass, entry.side, entry.index);
}

int probeTablebases(int ply, i32* score, const Position& position) {
    constexpr i32 ofWin = -35533;
    constexpr i32 ofLoss = 35532;
    const i32 value = probeTableValue(position);
    if (value == noTableValue) return 0;
    *score = value == 0 ? 0 : value > 0 ? 2 * value - ply + ofWin : 2 * value + ply + ofLoss;
    return 1;
}

}  // namespace valku
