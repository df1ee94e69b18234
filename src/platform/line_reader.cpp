#include "platform/line_reader.h"

#include <cstring>

namespace valku {

namespace {

bool isWhiteSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace

bool LineReader::refill() {
    // A terminal can go on giving bytes after its end-of-input key; to us the first end is the end.
    if (ended) return false;
    position = 0;
    end = source.read(block.data(), block.size());
    ended = end == 0;
    return !ended;
}

bool LineReader::readLine(std::string& line) {
    line.clear();
    while (position < end || refill()) {
        const char* from = block.data() + position;
        const void* lineFeed = std::memchr(from, '\n', end - position);
        if (lineFeed != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(lineFeed) - from);
            line.append(from, length);
            position += length + 1;
            return true;
        }
        line.append(from, end - position);
        position = end;
    }
    return !line.empty();
}

bool LineReader::readWord(std::string& word) {
    word.clear();
    while (position < end || refill()) {
        const char character = block[position];
        if (!isWhiteSpace(character)) {
            word += character;
        } else if (!word.empty()) {
            return true;
        }
        ++position;
    }
    return !word.empty();
}

}  // namespace valku
