#include "book/book_file.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>

#include "book/opening_book.h"
#include "chess/types.h"
#include "platform/fault.h"
#include "platform/file_replacement.h"
#include "platform/regular_file.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

enum Mark : u8 {
    positionFollows = 0xC8,
    bucketFollows = 0xC9,
    endOfBook = 0xCA,
};
constexpr u8 firstByteAfterSquares = 0x78;

// The bytes of a book file, one after the other; after the last one comes endOfBook, and `ended` tells.
class BookBytes {
  public:
    explicit BookBytes(const std::string& path) : file(openRegularFile(path)) {}

    bool isOpen() const { return file.is_open(); }

    // Of the whole file. To be asked before the first byte.
    std::size_t length() { return static_cast<std::size_t>(std::max<std::streamoff>(lengthOf(file), 0)); }

    u8 next() {
        if (position == size && !refill()) return endOfBook;
        return static_cast<u8>(block[position++]);
    }

    u32 nextNumber(int length) {
        u32 number = 0;
        for (int i = 0; i < length; ++i) number |= static_cast<u32>(next()) << 8 * i;
        return number;
    }

    bool ended = false;

  private:
    bool refill() {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        size = static_cast<std::size_t>(file.gcount());
        position = 0;
        ended = size == 0;
        return !ended;
    }

    std::ifstream file;
    std::array<char, 65536> block;
    std::size_t size = 0;
    std::size_t position = 0;
};

// Many errors mean that the file is no book: only the first ones are reported.
class ErrorReport {
  public:
    void tell() {
        constexpr int mostLines = 20;
        if (++lines <= mostLines) sendText("Error when reading opening book!\n");
    }

  private:
    int lines = 0;
};

void readMove(BookBytes& bytes, u8 from, u32 hashHigh, u32 hashLow, ErrorReport& errors) {
    const u8 to = bytes.next();
    const u8 promotion = bytes.next();
    const u8 value = bytes.next();
    if (bytes.ended) return;
    if (onBoard(from) && onBoard(to) && isBookValue(static_cast<char>(value))) {
        addBookMove(hashHigh, hashLow, {from, to, promotion, value}, Overwrite::always);
    } else {
        errors.tell();
    }
}

void readBook(BookBytes& bytes) {
    ErrorReport errors;
    u32 bucket = bytes.nextNumber(2);
    u32 hashHigh = bytes.nextNumber(4);
    for (;;) {
        const u8 byte = bytes.next();
        if (byte < firstByteAfterSquares) {
            readMove(bytes, byte, hashHigh, bucket, errors);
        } else if (byte == positionFollows || byte == bucketFollows) {
            if (byte == bucketFollows) bucket = bytes.nextNumber(2);
            hashHigh = bytes.nextNumber(4);
        } else if (byte != endOfBook) {
            errors.tell();
        }
        if (bytes.ended) {
            errors.tell();
            return;
        }
        if (byte == endOfBook) return;
    }
}

// The mark after a position depends on what follows, so it is written with that.
class BookWriter {
  public:
    explicit BookWriter(FileReplacement& replacement) : file(replacement) {}

    void write(const BookPosition& position) {
        const bool sameBucket = bucket == position.bucket;
        if (bucket != none) put(sameBucket ? positionFollows : bucketFollows);
        bucket = position.bucket;
        if (!sameBucket) putNumber(position.bucket, 2);
        putNumber(position.hashHigh, 4);
        for (const BookMove& move : position.moves) {
            for (const u8 byte : {move.from, move.to, move.promotion, move.value}) put(byte);
        }
        file.write(bytes);
        bytes.clear();
    }

    void end() { file.write(std::string(1, static_cast<char>(endOfBook))); }

  private:
    void put(u8 byte) { bytes += static_cast<char>(byte); }
    void putNumber(u32 number, int length) {
        for (int i = 0; i < length; ++i) put(static_cast<u8>(number >> 8 * i));
    }

    static constexpr i32 none = -1;

    FileReplacement& file;
    i32 bucket = none;
    std::string bytes;
};

}  // namespace

bool loadBook() {
    BookBytes bytes(bookFile);
    if (!bytes.isOpen()) return false;
    constexpr std::size_t leastPosition = 9;       // its key, a move and the mark
    constexpr std::size_t mostExpected = 1 << 24;  // a file of any length need not be a book
    expectBookPositions(std::min(bytes.length() / leastPosition, mostExpected));
    readBook(bytes);
    return true;
}

void saveBook(const std::string& path) {
    sendText("Writing opening-book...\n");
    if (bookSize.moves == 0) throw Fault("...error: no opening-moves to write!");
    FileReplacement file(path);
    if (!file.isOpen()) throw Fault("Couldn´t open book-file!");
    BookWriter writer(file);
    forEachBookPosition([&](const BookPosition& position) { writer.write(position); });
    writer.end();
    if (!file.putInPlace()) throw Fault("...error: the book could not be written!");
    sendText("...done!\n");
}

}  // namespace valku
