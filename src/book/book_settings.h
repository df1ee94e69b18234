#pragma once

#include <string>

#include "chess/types.h"
#include "platform/shared_value.h"

namespace valku {

extern std::string bookFile;          // path of the opening book
extern i32 bookWeights[256];          // the weight of a book move by its value letter, 'a' to 'g'
extern SharedFlag BestBookMovesOnly;  // play the moves of the best value in a position only

// The default weights. Before the settings are read.
void initBookWeights();

}  // namespace valku
