#include "platform/line_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/text_scan.h"

namespace valku {

bool LineReader::refill() {
    // A terminal can deliver more bytes after its end-of-input key; the first end is final here.
    if (ended) return false;
    position = 0;
    end = source.read(block.data(), block.size());
    ended = end == 0;
    return !ended;
}

void LineReader::append(std::string& text, const char* from, std::size_t count) {
    const std::size_t room = longestText - text.size();
    cut = cut || count > room;
    text.append(from, std::min(count, room));
}

bool LineReader::readLine(std::string& line) {
    line.clear();
    cut = false;
    while (position < end || refill()) {
        const char* from = block.data() + position;
        const void* lineFeed = std::memchr(from, '\n', end - position);
        if (lineFeed != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - from);
            append(line, from, length);
            position += length + 1;
            return true;
        }
        append(line, from, end - position);
        position = end;
    }
    return !line.empty();
}

bool LineReader::readWord(std::string& word) {
    word.clear();
    cut = false;
    while (position < end || refill()) {
        const char character = block[position];
        if (!isWhiteSpace(character)) {
            append(word, &character, 1);
        } else if (!word.empty()) {
            return true;
        }
        ++position;
    }
    return !word.empty();
}

}  // namespace valku
