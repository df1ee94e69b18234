#pragma once

namespace valku {

// Reports to the interface a table that the root process has just created or joined.
void reportHashTable(bool joined = false);

}  // namespace valku
