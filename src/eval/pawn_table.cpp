#include "eval/pawn_table.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace valku {

namespace {

// The table if there is no memory for two entries.
PawnEntry smallestTable;

// The result of calloc, not yet aligned.
void* tableMemory = nullptr;

}  // namespace

PawnEntry* pawnTable = nullptr;
u64 nPawnTables = 524288;

void createPawnTable() {
    std::free(tableMemory);
    tableMemory = nullptr;
    // calloc takes large blocks from the system as zero pages, which cost nothing until they are written to.
    // It does not know the alignment of an entry: one entry more leaves room to align.
    for (; nPawnTables > 1; nPawnTables /= 2) {
        tableMemory = std::calloc(nPawnTables + 1, sizeof(PawnEntry));
        if (tableMemory == nullptr) continue;
        std::size_t space = (nPawnTables + 1) * sizeof(PawnEntry);
        void* aligned = tableMemory;
        pawnTable = static_cast<PawnEntry*>(
            std::align(alignof(PawnEntry), nPawnTables * sizeof(PawnEntry), aligned, space));
        return;
    }
    nPawnTables = 1;
    pawnTable = &smallestTable;
    clearPawnTable();
}

void clearPawnTable() {
    std::memset(static_cast<void*>(pawnTable), 0, nPawnTables * sizeof(PawnEntry));
}

}  // namespace valku
