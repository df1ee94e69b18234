#pragma once

#include "tablemaker/match_parser.h"

namespace valku {

// Chooses the match distances that make these blocks small, greedily and from a sample of the blocks. Returns
// them with the costs of the symbols when they are used.
ParseModel chooseOffsets(const TableBlocks& blocks, int threads);

}  // namespace valku
