#pragma once

#include <cstdint>

namespace valku {

// How an operation on a shared block went.
enum class SharedMemoryResult {
    done,
    taken,      // create: a live block has this id
    missing,    // open: there is no live block of this id
    refused,    // the system does not allow such a block (size, limits, permissions)
    notMapped,  // the block exists but does not fit into this process's address space
};

// A block of memory that several processes share under a numeric id. It exists as long as a process has it
// open; the block of an engine that died without closing it is recognised and removed by the next `create` or
// `open` of its id. The id becomes free when the creator closes; processes that still have the block open
// keep it until they close it too. An object is for one thread at a time.
class SharedMemory {
  public:
    SharedMemory() = default;
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    // Makes a new block of `size` bytes, all zero, under `id` (any number but 0). Of two processes that
    // create the same id at the same moment one gets `taken`. Pages take up memory when they are first used.
    SharedMemoryResult create(int id, std::uint64_t size);

    // Attaches to the block that another process, or this one, has created.
    SharedMemoryResult open(int id);

    // False if the system could not release the block. Closing what is not open is no failure.
    bool close();

    // Null while closed; aligned to a page.
    void* address() const { return start; }

    // In bytes, as given to `create`.
    std::uint64_t size() const { return length; }

    // Removes the blocks of dead engines among the `count` ids from `firstId` on. Blocks that may still be in
    // use are left alone.
    static void removeStale(int firstId, int count);

    // For a process that is about to end, on any thread: frees the ids of all blocks that it has created. The
    // memory is released with the last process that still has it open. Threads that create or close a block
    // from then on wait for the end of the process.
    static void removeOwn();

  private:
    SharedMemoryResult attach(int newSegment);

    void* start = nullptr;
    std::uint64_t length = 0;
    int segment = -1;
    bool creator = false;
};

}  // namespace valku
