#include "search/shared_pointer_table.h"

#include <map>
#include <string>
#include <utility>

#include "platform/shared_memory.h"
#include "search/hash_table.h"

namespace valku {

namespace {

struct SharedMemoryInfo {
    SharedMemory memory;
    i32 refCount = 1;
};

std::map<i32, SharedMemoryInfo>& sharedPointers() {
    static std::map<i32, SharedMemoryInfo> table;
    return table;
}

void* enter(SharedMemory&& memory) {
    SharedMemoryInfo& info = sharedPointers()[sharedTableId];
    info = {std::move(memory), 1};
    return info.memory.address();
}

constexpr const char* mapFailure = "Error in createdSharedPointer: MapViewOfFile!";

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
            throw std::string(mapFailure);
        default:
            return nullptr;
    }
}

bool isSharedPointerOpen(i32 id) {
    return sharedPointers().contains(id);
}

u64 sharedPointerSize(i32 id) {
    return sharedPointers().at(id).memory.size();
}

void* createSharedPointer(u64 size) {
    if (size >= u64{1} << 32) throw std::string("Error in createSharedPointer: size >= 2^32 !");
    if (isSharedPointerOpen(sharedTableId)) {
        throw "Error in createSharedPointer: there is already a handle for id " +
            std::to_string(sharedTableId) + "!";
    }
    SharedMemory memory;
    switch (memory.create(sharedTableId, size)) {
        case SharedMemoryResult::done:
            return enter(std::move(memory));
        case SharedMemoryResult::taken:
            return nullptr;
        case SharedMemoryResult::notMapped:
            throw std::string(mapFailure);
        default:
            throw std::string("Error in createSharedPointer: smi.handle=NULL!");
    }
}

void clearSharedPointer(i32 id) {
    const auto known = sharedPointers().find(id);
    if (known == sharedPointers().end()) {
        throw "Error in clearSharedPointer: there is no handle for id " + std::to_string(id) + "!";
    }
    if (--known->second.refCount > 0) return;
    if (!known->second.memory.close()) throw std::string("Error in clearSharedPointer: UnmapViewOfFile");
    sharedPointers().erase(known);
}

}  // namespace valku
