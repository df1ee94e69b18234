#pragma once

#include <span>
#include <string>
#include <vector>

#include "chess/types.h"

// Table files in the compressed form of tablebases/compressed_file.h.

namespace valku {

// Writes the bytes of a table, at least one, as a compressed file, on `threads` threads. The file appears at
// `path` when it is whole; until then what is there stays. Returns its size in bytes. Throws a Fault if it
// cannot be written.
u64 compressTable(std::span<const u8> plain, const std::string& path, int threads);

// The bytes of the table in a compressed file. Throws a Fault, which names the file, if it cannot be read, a
// check in it fails, or there is not enough memory.
std::vector<u8> expandTable(const std::string& path);

}  // namespace valku
