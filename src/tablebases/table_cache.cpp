#include "tablebases/table_cache.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <new>
#include <span>

#include "platform/fault.h"
#include "platform/raw_io.h"
#include "tablebases/compressed_file.h"
#include "tablebases/material_classes.h"

namespace valku {

i32 TBCacheSize = 33554432;
i32 cacheSlots = 0;

namespace {

constexpr std::size_t cacheBytes = 33'554'432;
constexpr i32 slotCount = 4062;
constexpr std::size_t slotDataBytes = 8228;
constexpr u32 bucketCount = 32;  // of each table; block b is in bucket b % bucketCount
constexpr u32 blocksOfPart = static_cast<u32>(tbPartBytes / tableBlockSize);

using SlotNumber = i32;
constexpr SlotNumber noSlot = -1;

struct CacheSlot {
    i32 tbClass;
    i32 side;
    u32 block;
    SlotNumber older, newer;  // recency list; free slots are linked through `older` alone
    SlotNumber bucketNext, bucketPrev;
};

struct CacheArea {
    CacheSlot slots[slotCount];
    u8 data[slotCount][slotDataBytes];
    u8 unused[cacheBytes - slotCount * (sizeof(CacheSlot) + slotDataBytes)];
};
static_assert(sizeof(CacheArea) == cacheBytes);

std::unique_ptr<CacheArea> area;
SlotNumber newest = noSlot;
SlotNumber oldest = noSlot;
SlotNumber freeList = noSlot;
std::array<std::array<std::array<SlotNumber, bucketCount>, 2>, tbClassCount> cacheBuckets;

DecodeBlock decodeContext;
std::array<std::array<std::array<std::unique_ptr<std::ifstream>, tbMaxParts>, 2>, tbClassCount> openFiles;

CacheSlot& slotAt(SlotNumber number) {
    return area->slots[number];
}

SlotNumber& bucketHead(const CacheSlot& slot) {
    return cacheBuckets[static_cast<u32>(slot.tbClass)][static_cast<u32>(slot.side)]
                       [slot.block % bucketCount];
}

void makeNewest(SlotNumber number) {
    CacheSlot& slot = slotAt(number);
    slot.older = newest;
    slot.newer = noSlot;
    (newest != noSlot ? slotAt(newest).newer : oldest) = number;
    newest = number;
}

void unlinkFromRecency(const CacheSlot& slot) {
    (slot.newer != noSlot ? slotAt(slot.newer).older : newest) = slot.older;
    (slot.older != noSlot ? slotAt(slot.older).newer : oldest) = slot.newer;
}

void linkInBucket(SlotNumber number) {
    CacheSlot& slot = slotAt(number);
    SlotNumber& head = bucketHead(slot);
    slot.bucketNext = head;
    slot.bucketPrev = noSlot;
    if (head != noSlot) slotAt(head).bucketPrev = number;
    head = number;
}

void unlinkFromBucket(const CacheSlot& slot) {
    (slot.bucketPrev != noSlot ? slotAt(slot.bucketPrev).bucketNext : bucketHead(slot)) = slot.bucketNext;
    if (slot.bucketNext != noSlot) slotAt(slot.bucketNext).bucketPrev = slot.bucketPrev;
}

void linkInFreeList(SlotNumber number) {
    slotAt(number).older = freeList;
    freeList = number;
}

// A free slot, or the least recently used one.
SlotNumber takeSlot() {
    SlotNumber number = freeList;
    if (number != noSlot) {
        freeList = slotAt(number).older;
        return number;
    }
    number = oldest;
    unlinkFromRecency(slotAt(number));
    unlinkFromBucket(slotAt(number));
    return number;
}

std::unique_ptr<std::ifstream> openFile(const std::string& name) {
    auto file = std::make_unique<std::ifstream>();
    file->rdbuf()->pubsetbuf(nullptr, 0);  // unbuffered: whole blocks are read, to their place
    file->open(name, std::ios::binary);
    if (!file->is_open()) file.reset();
    return file;
}

// Reads a block of a plain file. The last one of a file may be short. False if `offset` is not in it.
bool readPlainBlock(std::ifstream& file, u32 block, u32 offset, bool twoByte, std::span<u8> data) {
    file.clear();
    file.seekg(static_cast<std::streamoff>(u64{block} * tableBlockSize));
    file.read(reinterpret_cast<char*>(data.data()), static_cast<std::streamsize>(data.size()));
    if (file.bad()) return false;
    // What a file that was cut short lacks holds "no value".
    const auto size = static_cast<std::size_t>(file.gcount());
    for (std::size_t place = size; place < data.size(); ++place)
        data[place] = twoByte && place % 2 == 0 ? 0xFF : 0x7F;
    return offset < size;
}

bool readBlock(const CacheSlot& slot, u32 offset, std::span<u8> data) {
    TbClass& tbClass = classTable[static_cast<u32>(slot.tbClass)];
    std::vector<TbFile>& files = tbClass.files[slot.side];
    const u32 part = tbClass.has(tbMultiPart) ? slot.block / blocksOfPart : 0;
    if (part >= files.size() || files[part].name.empty()) return false;
    TbFile& tbFile = files[part];
    const u32 block = slot.block - part * blocksOfPart;
    const auto readFrom = [&](std::ifstream& file) {
        if (!tbFile.decodeInfo) return readPlainBlock(file, block, offset, tbClass.has(tbTwoByte), data);
        try {
            decodeBlock(decodeContext, file, *tbFile.decodeInfo, block, data);
            return true;
        } catch (const Fault&) {
            return false;
        }
    };

    std::unique_ptr<std::ifstream>& file =
        openFiles[static_cast<u32>(slot.tbClass)][static_cast<u32>(slot.side)][part];
    if (!file) file = openFile(tbFile.name);
    if (!file) {
        closeAllTbFiles();  // there may be more than the system allows
        file = openFile(tbFile.name);
    }
    if (file && readFrom(*file)) return true;
    file.reset();
    tbFile.name.clear();
    return false;
}

}  // namespace

void initCache() {
    if (!area) area.reset(new (std::nothrow) CacheArea);
    if (!area) {
        writeStandardOutput("Not enough memory for TB-Cache!\n");
        return;
    }
    closeAllTbFiles();
    cacheSlots = slotCount;
    newest = oldest = freeList = noSlot;
    for (SlotNumber number = slotCount - 1; number >= 0; --number) linkInFreeList(number);
    for (auto& sides : cacheBuckets) {
        for (auto& buckets : sides) buckets.fill(noSlot);
    }
}

void closeAllTbFiles() {
    for (auto& sides : openFiles) {
        for (auto& parts : sides) std::ranges::fill(parts, nullptr);
    }
}

i32 readTableByte(int tbClass, int side, u32 block, u32 offset) {
    if (cacheSlots == 0) return noTableByte;
    const auto byteOf = [offset](SlotNumber number) { return static_cast<i8>(area->data[number][offset]); };
    SlotNumber& head = cacheBuckets[static_cast<u32>(tbClass)][static_cast<u32>(side)][block % bucketCount];
    for (SlotNumber number = head; number != noSlot; number = slotAt(number).bucketNext) {
        CacheSlot& slot = slotAt(number);
        if (slot.block != block) continue;
        if (number != newest) {
            unlinkFromRecency(slot);
            makeNewest(number);
        }
        if (number != head) {
            unlinkFromBucket(slot);
            linkInBucket(number);
        }
        return byteOf(number);
    }

    const SlotNumber number = takeSlot();
    CacheSlot& slot = slotAt(number);
    slot.tbClass = tbClass;
    slot.side = side;
    slot.block = block;
    if (!readBlock(slot, offset, std::span(area->data[number]).first<tableBlockSize>())) {
        linkInFreeList(number);
        return noTableByte;
    }
    makeNewest(number);
    linkInBucket(number);
    return byteOf(number);
}

}  // namespace valku
