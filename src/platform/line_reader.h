#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace valku {

// The stream that a LineReader reads.
class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // Waits until there are bytes and puts 1 to `size` of them at `to`. Returns their number; 0 at the end
    // of the input and after a failure.
    virtual std::size_t read(char* to, std::size_t size) = 0;
};

// Splits a stream of bytes into lines and words; every read waits until its text is complete. Needs a fixed
// block of memory beside the text being built, which may be bounded. For one thread at a time.
class LineReader {
  public:
    static constexpr std::size_t unbounded = static_cast<std::size_t>(-1);

    // `bytes` must outlive the reader. Lines and words are cut after `longest` bytes.
    explicit LineReader(ByteSource& bytes, std::size_t longest = unbounded)
        : source(bytes), longestText(longest) {}
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Puts the text up to the next line feed into `line`, without the line feed; a carriage return before it
    // is left in. Text after the last line feed is a line too. False, with an empty `line`, when the input
    // has ended.
    bool readLine(std::string& line);

    // Skips white space and puts the next word into `word`. What follows the word, its line feed too, is left
    // for the next read. False, with an empty `word`, when the input has ended.
    bool readWord(std::string& word);

    // True if the last line or word was too long and was cut.
    bool wasCut() const { return cut; }

  private:
    bool refill();
    void append(std::string& text, const char* from, std::size_t count);

    static constexpr std::size_t blockSize = 8192;

    ByteSource& source;
    std::size_t longestText;
    bool cut = false;
    std::array<char, blockSize> block;
    std::size_t position = 0;
    std::size_t end = 0;
    bool ended = false;
};

}  // namespace valku
