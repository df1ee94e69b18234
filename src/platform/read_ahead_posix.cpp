#include <poll.h>

#include <algorithm>
#include <array>

#include "platform/descriptor_posix.h"
#include "platform/read_ahead.h"

namespace valku {

namespace {

bool hasBytesOrEnd(int descriptor) {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

}  // namespace

std::size_t ReadAhead::read(char* to, std::size_t size) {
    if (position < kept.size()) {
        const std::size_t count = kept.copy(to, size, position);
        position += count;
        return count;
    }
    kept.clear();
    position = 0;
    if (ended) return 0;
    const std::size_t count = readDescriptor(descriptor, to, size);
    note({to, count});
    if (count == 0) end();
    return count;
}

void ReadAhead::watch(std::span<const std::string_view> lines, std::string_view lastLine) {
    wanted = lines;
    closing = lastLine;
    fetch();
    brought = false;
}

bool ReadAhead::hasBrought() {
    fetch();
    return brought;
}

// Reads what has arrived, without waiting.
void ReadAhead::fetch() {
    std::array<char, 4096> block;
    kept.erase(0, position);
    position = 0;
    while (!ended && kept.size() < mostKept && hasBytesOrEnd(descriptor)) {
        const std::size_t count = readDescriptor(descriptor, block.data(), block.size());
        note({block.data(), count});
        kept.append(block.data(), count);
        if (count == 0) end();
    }
}

void ReadAhead::note(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte != '\n') {
            if (openLine.size() < longestLine) openLine += byte;
            continue;
        }
        if (openLine.ends_with('\r')) openLine.pop_back();
        brought = brought || std::find(wanted.begin(), wanted.end(), openLine) != wanted.end();
        completeLine.swap(openLine);
        openLine.clear();
    }
}

void ReadAhead::end() {
    ended = true;
    if (completeLine != closing || !openLine.empty()) brought = true;
}

}  // namespace valku
