#pragma once

#include <span>
#include <string>
#include <vector>

#include "chess/types.h"

// Table files in the compressed form of tablebases/compressed_header.h.

namespace valku {

// Writes the bytes as a compressed file. The file appears at `path` when it is whole and stands there
// unchanged otherwise. Works on `threads` threads. Returns the size of the file, 0 if it could not be
// written.
u64 compressTable(std::span<const u8> plain, const std::string& path, int threads);

// The bytes of a compressed file. False if it cannot be read, a check in it does not hold, or the memory does
// not suffice; `error` is then a text that names the file and says so.
bool expandTable(const std::string& path, std::vector<u8>& plain, std::string& error);

}  // namespace valku
