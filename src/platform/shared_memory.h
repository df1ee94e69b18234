#pragma once

#include <cstdint>

namespace valku {

/// How an operation on a shared block went.
enum class SharedMemoryResult {
    done,
    taken,      ///< create: a live block has this id
    missing,    ///< open: there is no live block of this id
    refused,    ///< the system gives no such block (its size, its limits, its rights)
    notMapped,  ///< the block is there but found no room in this process's address space
};

/// A block of memory that several processes share, named by a number alone. It lives as long as somebody has
/// it open, whatever way its users end: the block of an engine that died without closing it is recognised and
/// removed by the next `create` or `open` of its id.
/// The name disappears when the creator closes; processes that still have the block open keep it until they
/// close it too.
class SharedMemory {
  public:
    SharedMemory() = default;
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    /// Makes a new block of `size` bytes, all zero, under `id` (any number but 0). Of two processes that
    /// create the same id at the same moment one gets `taken`. Memory is used only as the block is written.
    SharedMemoryResult create(int id, std::uint64_t size);

    /// Attaches to the block that another process, or this one, has created.
    SharedMemoryResult open(int id);

    /// False if the system refused to let the block go. Closing what is not open is no failure.
    bool close();

    /// Null while closed. Aligned to a page.
    void* address() const { return start; }

    /// In bytes, as given to `create`.
    std::uint64_t size() const { return length; }

    /// Removes the blocks of dead engines among the ids from `firstId` on, `count` of them. Blocks that
    /// anybody may still be using are left alone.
    static void removeStale(int firstId, int count);

    /// For a process that is about to end, whatever its other threads are doing: lets go of the names of all
    /// blocks that it has created. The memory goes with the last process that still has it open. Whoever
    /// wants to create or close a block from then on waits for the end.
    static void removeOwn();

  private:
    SharedMemoryResult attach(int newSegment);

    void* start = nullptr;
    std::uint64_t length = 0;
    int segment = -1;
    bool creator = false;
};

}  // namespace valku
