#include <signal.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <limits>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/shared_memory.h"

namespace valku {

namespace {

constexpr int onlyThisUser = 0600;

// After a failed call on a segment: true if the segment is no longer there.
bool wasRemoved() {
    return errno == EIDRM || errno == EINVAL;
}

// The segments that this process has made and still owns. Each is made and recorded in one step under the
// lock, so that the end of the process misses none. Recursive, because removeOwn() keeps the lock.
struct OwnSegments {
    std::recursive_mutex mutex;
    std::vector<int> numbers;
};

OwnSegments& ownSegments() {
    static auto* const segments = new OwnSegments;  // outlives all static objects
    return *segments;
}

// shmget for a new segment of the id; the number or -1.
int makeSegment(int id, std::size_t size) {
    OwnSegments& own = ownSegments();
    const std::lock_guard guard(own.mutex);
    own.numbers.reserve(own.numbers.size() + 1);
    const int made = shmget(id, size, IPC_CREAT | IPC_EXCL | onlyThisUser);
    if (made >= 0) own.numbers.push_back(made);
    return made;
}

// False if the system refused.
bool removeSegment(int segment) {
    OwnSegments& own = ownSegments();
    const std::lock_guard guard(own.mutex);
    std::erase(own.numbers, segment);
    return shmctl(segment, IPC_RMID, nullptr) == 0 || wasRemoved();
}

// Also true of a zombie, whose parent has not collected it yet.
bool isProcessGone(pid_t process) {
    if (kill(process, 0) != 0) return errno == ESRCH;
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string fields;
    std::getline(file, fields, '\0');
    const std::size_t name = fields.rfind(") ");
    if (name == std::string::npos) return false;
    const char state = fields[name + 2];
    return state == 'Z' || state == 'X';
}

bool isUsed(int segment) {
    shmid_ds state{};
    return shmctl(segment, IPC_STAT, &state) == 0 && state.shm_nattch != 0;
}

// Removes a segment that is no longer in use: attached nowhere, and its creator dead. The creator's death
// matters because a new segment is attached nowhere until its creator gets to attaching it. True if the
// segment is gone, removed by us or by another process.
bool removeIfStale(int segment) {
    shmid_ds state{};
    if (shmctl(segment, IPC_STAT, &state) != 0) return wasRemoved();
    const bool ours = state.shm_perm.uid == geteuid() && (state.shm_perm.mode & 0777) == onlyThisUser;
    // A creator in another container has no process id here; whether it lives is unknown.
    const bool creatorKnown = state.shm_cpid > 0;
    if (!ours || state.shm_nattch != 0 || !creatorKnown || !isProcessGone(state.shm_cpid)) return false;
    return shmctl(segment, IPC_RMID, nullptr) == 0 || wasRemoved();
}

// After the last user of a dead creator's segment no other process would remove it. A killed creator detaches
// some moments before it counts as dead, hence the wait.
void removeAfterUse(int segment) {
    constexpr int patienceMs = 500;
    for (int waited = 0; !removeIfStale(segment) && !isUsed(segment) && waited < patienceMs; ++waited) {
        sleepMilliseconds(1);
    }
}

}  // namespace

SharedMemory::SharedMemory(SharedMemory&& other) noexcept {
    *this = std::move(other);
}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
    std::swap(start, other.start);
    std::swap(length, other.length);
    std::swap(segment, other.segment);
    std::swap(creator, other.creator);
    return *this;
}

SharedMemory::~SharedMemory() {
    close();
}

SharedMemoryResult SharedMemory::attach(int newSegment) {
    void* address = shmat(newSegment, nullptr, 0);
    if (address == reinterpret_cast<void*>(-1)) {
        return wasRemoved() ? SharedMemoryResult::missing : SharedMemoryResult::notMapped;
    }
    shmid_ds state{};
    if (shmctl(newSegment, IPC_STAT, &state) != 0) {
        shmdt(address);
        return SharedMemoryResult::notMapped;
    }
    start = address;
    length = state.shm_segsz;
    segment = newSegment;
    return SharedMemoryResult::done;
}

SharedMemoryResult SharedMemory::create(int id, std::uint64_t size) {
    close();
    if (id == IPC_PRIVATE || size == 0 || size > std::numeric_limits<std::size_t>::max()) {
        return SharedMemoryResult::refused;
    }
    for (;;) {
        const int made = makeSegment(id, static_cast<std::size_t>(size));
        if (made >= 0) {
            const SharedMemoryResult result = attach(made);
            creator = result == SharedMemoryResult::done;
            if (!creator) removeSegment(made);
            return result;
        }
        if (errno != EEXIST) return SharedMemoryResult::refused;
        // The holder of the id may release it between two calls; then the next round finds it free.
        const int existing = shmget(id, 0, 0);
        if (existing >= 0 ? !removeIfStale(existing) : errno != ENOENT) return SharedMemoryResult::taken;
    }
}

SharedMemoryResult SharedMemory::open(int id) {
    close();
    if (id == IPC_PRIVATE) return SharedMemoryResult::missing;
    const int existing = shmget(id, 0, onlyThisUser);
    if (existing < 0) return errno == ENOENT ? SharedMemoryResult::missing : SharedMemoryResult::refused;
    if (removeIfStale(existing)) return SharedMemoryResult::missing;
    return attach(existing);
}

void SharedMemory::removeStale(int firstId, int count) {
    for (int id = firstId; id < firstId + count; ++id) {
        const int existing = shmget(id, 0, onlyThisUser);
        if (existing >= 0) removeIfStale(existing);
    }
}

void SharedMemory::removeOwn() {
    OwnSegments& own = ownSegments();
    own.mutex.lock();
    for (const int segment : own.numbers) shmctl(segment, IPC_RMID, nullptr);
}

bool SharedMemory::close() {
    if (start == nullptr) return true;
    // Marked for removal before we detach: the system then removes it with the last process that detaches.
    const bool unnamed = !creator || removeSegment(segment);
    const bool detached = shmdt(start) == 0;
    if (!creator) removeAfterUse(segment);
    start = nullptr;
    length = 0;
    segment = -1;
    creator = false;
    return unnamed && detached;
}

}  // namespace valku
