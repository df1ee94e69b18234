#pragma once

namespace valku {

// Tells the interface of a table that the root process has just created or joined.
void reportHashTable(bool joined = false);

}  // namespace valku
