#include "search/hash_memory.h"

#include <algorithm>
#include <bit>
#include <map>
#include <string>
#include <utility>

#include "platform/fault.h"
#include "platform/shared_memory.h"
#include "search/hash_table.h"

namespace valku {

namespace {

constexpr i32 firstTableId = 1234000;
constexpr i32 idsInUse = 256;  // more engines than a machine runs
constexpr u64 tooManyBytes = u64{1} << 32;
constexpr const char* mapFailure = "Error in createdSharedPointer: MapViewOfFile!";

struct SharedMemoryInfo {
    SharedMemory memory;
    i32 refCount = 1;
};

// The blocks that this process has open, by id.
std::map<i32, SharedMemoryInfo>& sharedPointers() {
    static std::map<i32, SharedMemoryInfo> table;
    return table;
}

void* enter(SharedMemory&& memory) {
    SharedMemoryInfo& info = sharedPointers()[sharedTableId];
    info = {std::move(memory), 1};
    return info.memory.address();
}

bool openTable() {
    void* const memory = openSharedPointer();
    if (!memory) return false;
    // A smaller table than the one asked for is another table.
    if (sharedPointers().at(sharedTableId).memory.size() / sizeof(HashBucket) < nHashTables) {
        clearSharedPointer(sharedTableId);
        return false;
    }
    hashTable = static_cast<HashBucket*>(memory);
    hashReadiness = HashReadiness::none;  // other processes write to it too
    clearHashTable();
    return true;
}

// Takes the first id that nobody uses; another process may take one between the look and the creation. The
// tables of other engines are not opened to find out: there may be no room for them in this address space.
void createTable() {
    SharedMemory::removeStale(firstTableId, idsInUse);
    const u64 size = std::min(nHashTables, tooManyBytes) * sizeof(HashBucket);  // without overflow
    for (sharedTableId = firstTableId;; ++sharedTableId) {
        if (sharedPointers().contains(sharedTableId)) continue;
        if (void* const memory = createSharedPointer(size)) {
            hashTable = static_cast<HashBucket*>(memory);
            hashReadiness = HashReadiness::cleared;
            zeroHashTable();
            return;
        }
    }
}

}  // namespace

void* openSharedPointer() {
    const auto known = sharedPointers().find(sharedTableId);
    if (known != sharedPointers().end()) {
        ++known->second.refCount;
        return known->second.memory.address();
    }
    SharedMemory memory;
    switch (memory.open(sharedTableId)) {
        case SharedMemoryResult::done:
            return enter(std::move(memory));
        case SharedMemoryResult::notMapped:
            throw Fault(mapFailure);
        default:
            return nullptr;
    }
}

void* createSharedPointer(u64 size) {
    if (size >= tooManyBytes) throw Fault("Error in createSharedPointer: size >= 2^32 !");
    if (sharedPointers().contains(sharedTableId)) {
        throw Fault("Error in createSharedPointer: there is already a handle for id " +
                    std::to_string(sharedTableId) + "!");
    }
    SharedMemory memory;
    switch (memory.create(sharedTableId, size)) {
        case SharedMemoryResult::done:
            return enter(std::move(memory));
        case SharedMemoryResult::taken:
            return nullptr;
        case SharedMemoryResult::notMapped:
            throw Fault(mapFailure);
        default:
            throw Fault("Error in createSharedPointer: smi.handle=NULL!");
    }
}

void clearSharedPointer(i32 id) {
    const auto known = sharedPointers().find(id);
    if (known == sharedPointers().end()) {
        throw Fault("Error in clearSharedPointer: there is no handle for id " + std::to_string(id) + "!");
    }
    if (--known->second.refCount > 0) return;
    if (!known->second.memory.close()) throw Fault("Error in clearSharedPointer: UnmapViewOfFile");
    sharedPointers().erase(known);
}

u64 floorPowerOfTwo(i64 x) {
    return x < 2 ? 1 : std::bit_floor(static_cast<u64>(x));
}

u64 bucketsForMegabytes(i64 megabytes) {
    constexpr i64 mostMegabytes = 1 << 20;
    return floorPowerOfTwo(std::min(megabytes, mostMegabytes) * 1048576 /
                           static_cast<i64>(sizeof(HashBucket)));
}

void setHashBuckets(i64 buckets) {
    nHashTables = floorPowerOfTwo(buckets);
    hashMask = nHashTables - 1;
}

bool createHashTable() {
    hashUsed = 0;
    const bool opening = sharedTableId != -1;
    try {
        if (opening) return openTable();
        createTable();
        return true;
    } catch (const Fault& fault) {
        throw Fault(std::string("Error in createHashTable while ") + (opening ? "opening" : "creating") +
                    " shared memory:\n" + fault.text());
    }
}

void releaseHashTable() {
    if (!hashTable) return;
    hashTable = nullptr;
    clearSharedPointer(sharedTableId);
    sharedTableId = -1;
}

}  // namespace valku
