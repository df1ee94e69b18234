#pragma once

#include <span>
#include <vector>

#include "tablemaker/match_parser.h"

namespace valku {

using TableBlocks = std::vector<std::span<const u8>>;

// The match distances that make these blocks small, and the costs of the symbols when they are used. Looks at
// some of the blocks only.
ParseModel chooseOffsets(const TableBlocks& blocks, int threads);

// A table in symbols.
struct ParsedTable {
    std::vector<std::vector<Token>> tokens;  // by block
    SymbolCounts counts;
};

ParsedTable parseTable(const TableBlocks& blocks, const ParseModel& model, int threads);

}  // namespace valku
