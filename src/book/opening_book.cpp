#include "book/opening_book.h"

#include <algorithm>
#include <bit>
#include <deque>

namespace valku {

BookSize bookSize;

namespace {

constexpr u32 nothing = 0xFFFFFFFF;
constexpr std::size_t bucketCount = 65536;

struct MoveNode {
    BookMove move;
    u32 next;  // among furtherMoves, or nothing
};

// A book commonly has a million of these, so they are small and hold their first move: most have no other.
struct Entry {
    u32 hashHigh;
    u32 next;  // in the chain
    MoveNode first;
    u16 bucket;
    bool removed;
};
static_assert(sizeof(Entry) == 20);

// In the order in which they were added, which is that of the file within a bucket. A removed entry leaves a
// gap; if its position is added again, it goes to the end.
std::deque<Entry> entries;
std::deque<MoveNode> furtherMoves;

// A hash table with chaining; the heads of the chains. Their number grows with the book: a power of two, or
// 0.
std::vector<u32> chains;

u16 bucketOf(u32 hashLow) {
    return static_cast<u16>(hashLow % bucketCount);
}

// A file is read bucket by bucket. So each bucket has a stretch of chains near those of its neighbours, which
// keeps the reading within the caches, and long enough for a book that is all in one bucket. The keys are
// spread by multiplicative hashing with the golden ratio (Knuth, The Art of Computer Programming, 6.4).
u32& chainOf(u32 hashHigh, u16 bucket) {
    const u64 stretch = chains.size() / 16;
    const u64 begin = u64{bucket} * chains.size() / bucketCount;
    const u64 mixed = hashHigh * u64{0x9E3779B97F4A7C15} >> 32;
    return chains[(begin + (mixed & (stretch - 1))) & (chains.size() - 1)];
}

// Makes enough chains for `entryCount` entries.
void growChains(std::size_t entryCount) {
    constexpr std::size_t fewest = 1024;
    constexpr std::size_t entriesPerChain = 2;
    if (entryCount < chains.size() * entriesPerChain) return;
    chains = {};  // the old memory is given back first
    chains.assign(std::max(fewest, std::bit_floor(entryCount)), nothing);
    for (u32 i = 0; i < entries.size(); ++i) {
        Entry& entry = entries[i];
        if (entry.removed) continue;
        u32& chain = chainOf(entry.hashHigh, entry.bucket);
        entry.next = chain;
        chain = i;
    }
}

// The link to the entry, or the end of its chain. There must be chains.
u32& linkTo(u32 hashHigh, u16 bucket) {
    u32* link = &chainOf(hashHigh, bucket);
    while (*link != nothing && (entries[*link].hashHigh != hashHigh || entries[*link].bucket != bucket))
        link = &entries[*link].next;
    return *link;
}

Entry* findEntry(u32 hashHigh, u16 bucket) {
    if (chains.empty()) return nullptr;
    const u32 number = linkTo(hashHigh, bucket);
    return number == nothing ? nullptr : &entries[number];
}

void appendEntry(u32 hashHigh, u16 bucket, const BookMove& move) {
    growChains(entries.size());
    u32& chain = chainOf(hashHigh, bucket);
    entries.push_back({hashHigh, chain, {move, nothing}, bucket, false});
    chain = static_cast<u32>(entries.size() - 1);
    ++bookSize.positions;
}

MoveNode* nextOf(const MoveNode& node) {
    return node.next == nothing ? nullptr : &furtherMoves[node.next];
}

bool isSameMove(const BookMove& one, const BookMove& other) {
    return one.from == other.from && one.to == other.to && one.promotion == other.promotion;
}

i32& countOf(u8 value) {
    return bookSize.movesByValue[value - bestBookValue];
}

void collectMoves(const Entry& entry, std::vector<BookMove>& moves) {
    for (const MoveNode* node = &entry.first; node; node = nextOf(*node)) moves.push_back(node->move);
}

void countNew(const BookMove& move) {
    ++bookSize.moves;
    ++countOf(move.value);
}

bool isReplaced(u8 oldValue, u8 newValue, Overwrite overwrite) {
    switch (overwrite) {
        case Overwrite::always:
            return true;
        case Overwrite::ifBetter:
            return oldValue > newValue;
        case Overwrite::ifWorse:
            return oldValue < newValue;
        default:
            return false;
    }
}

}  // namespace

std::vector<BookMove> bookMoves(u32 hashHigh, u32 hashLow) {
    std::vector<BookMove> moves;
    if (const Entry* entry = findEntry(hashHigh, bucketOf(hashLow))) collectMoves(*entry, moves);
    return moves;
}

void forEachBookPosition(const std::function<void(const BookPosition&)>& visit) {
    std::vector<u32> places(bucketCount + 1);  // where each bucket begins among the numbers
    for (const Entry& entry : entries) places[entry.bucket + std::size_t{1}] += !entry.removed;
    for (std::size_t bucket = 0; bucket < bucketCount; ++bucket) places[bucket + 1] += places[bucket];
    std::vector<u32> numbers(places.back());
    for (u32 i = 0; i < entries.size(); ++i) {
        if (!entries[i].removed) numbers[places[entries[i].bucket]++] = i;
    }
    std::vector<BookMove> moves;
    for (const u32 number : numbers) {
        const Entry& entry = entries[number];
        moves.clear();
        collectMoves(entry, moves);
        visit({entry.bucket, entry.hashHigh, moves});
    }
}

void expectBookPositions(std::size_t count) {
    growChains(entries.size() + count);
}

void addBookMove(u32 hashHigh, u32 hashLow, const BookMove& move, Overwrite overwrite) {
    Entry* entry = findEntry(hashHigh, bucketOf(hashLow));
    if (!entry) {
        appendEntry(hashHigh, bucketOf(hashLow), move);
        countNew(move);
        return;
    }
    MoveNode* node = &entry->first;
    while (!isSameMove(node->move, move) && node->next != nothing) node = nextOf(*node);
    if (!isSameMove(node->move, move)) {
        node->next = static_cast<u32>(furtherMoves.size());
        furtherMoves.push_back({move, nothing});
        countNew(move);
    } else if (isReplaced(node->move.value, move.value, overwrite)) {
        --countOf(node->move.value);
        ++countOf(move.value);
        node->move.value = move.value;
    }
}

void addBookMove(const Position& position, Move move, char value, Overwrite overwrite) {
    const BookMove bookMove{static_cast<u8>(moveFrom(move)), static_cast<u8>(moveTo(move)),
                            movePromotion(move), static_cast<u8>(value)};
    addBookMove(position.state->hashHigh, position.state->hashLow, bookMove, overwrite);
}

bool removeBookMove(u32 hashHigh, u32 hashLow, const BookMove& move) {
    Entry* entry = findEntry(hashHigh, bucketOf(hashLow));
    if (!entry) return false;
    MoveNode* node = &entry->first;
    MoveNode* before = nullptr;
    while (node && !isSameMove(node->move, move)) {
        before = node;
        node = nextOf(*node);
    }
    if (!node) return false;
    --countOf(node->move.value);
    --bookSize.moves;
    if (before) {
        before->next = node->next;
    } else if (const MoveNode* next = nextOf(*node)) {
        *node = MoveNode(*next);
    } else {
        linkTo(entry->hashHigh, entry->bucket) = entry->next;
        entry->removed = true;
        --bookSize.positions;
    }
    return true;
}

}  // namespace valku
