#include "book/book_file.h"

#include <cstdio>
#include <fstream>
#include <string_view>

#include "book/book_settings.h"
#include "book/file_text.h"
#include "book/opening_book.h"
#include "chess/types.h"
#include "search/format_text.h"
#include "search/output.h"
#include "search/process_state.h"

namespace valku {

namespace {

enum Mark : u8 {
    positionFollows = 0xC8,
    bucketFollows = 0xC9,
    endOfBook = 0xCA,
};
constexpr u8 firstByteBehindSquares = 0x78;

// The bytes of a book file, one after the other; behind the last one comes endOfBook, and `ended` tells.
class BookBytes {
  public:
    explicit BookBytes(std::string_view fileText) : bytes(fileText) {}

    u8 next() {
        if (position >= bytes.size()) {
            ended = true;
            return endOfBook;
        }
        return static_cast<u8>(bytes[position++]);
    }

    u32 nextNumber(int size) {
        u32 number = 0;
        for (int i = 0; i < size; ++i) number |= static_cast<u32>(next()) << 8 * i;
        return number;
    }

    bool ended = false;

  private:
    std::string_view bytes;
    std::size_t position = 0;
};

// Many errors mean that the file is no book; more of the same line would tell nothing.
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
    const char value = static_cast<char>(bytes.next());
    if (bytes.ended) return;
    if (onBoard(from) && onBoard(to) && isBookValue(value)) {
        addBookMove(hashHigh, hashLow, from, to, promotion, value, Overwrite::always);
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
        if (byte < firstByteBehindSquares) {
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

void appendNumber(std::string& bytes, u32 number, int size) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> 8 * i & 0xFF);
}

std::string bookBytes() {
    std::string bytes;
    for (u32 number = 0; number < OpeningBook::bucketCount; ++number) {
        const std::vector<BookPosition>& bucket = openingBook.buckets[number];
        if (bucket.empty()) continue;
        if (!bytes.empty()) bytes.back() = static_cast<char>(bucketFollows);
        appendNumber(bytes, number, 2);
        for (const BookPosition& position : bucket) {
            appendNumber(bytes, position.hashHigh, 4);
            for (const BookMove& move : position.moves) {
                for (const u8 byte : {move.from, move.to, move.promotion, move.value})
                    bytes += static_cast<char>(byte);
            }
            bytes += static_cast<char>(positionFollows);
        }
    }
    if (!bytes.empty()) bytes.back() = static_cast<char>(endOfBook);
    return bytes;
}

}  // namespace

void loadBook() {
    const FileText file(bookFile);
    if (!file.isOpen()) {
        if (processRole == roleRoot) sendText("No opening book found...\n");
        return;
    }
    BookBytes bytes(file.text());
    readBook(bytes);
    if (protocolMode == protocolConsole) {
        sendText(formatText("Book contains %i positions with %i moves.\n", openingBook.positionCount,
                            openingBook.moveCount));
    }
}

void saveBook(const std::string& path) {
    sendText("Writing opening-book...\n");
    const std::string bytes = bookBytes();
    if (bytes.empty()) {
        sendText("...error: no opening-moves to write!\n");
        return;
    }
    const std::string unfinished = path + ".new";
    std::ofstream file;
    if (!path.empty()) file.open(unfinished, std::ios::binary);
    if (!file.is_open()) {
        sendText("Couldn´t open book-file!\n");
        return;
    }
    file << bytes;
    file.close();
    if (!file || std::rename(unfinished.c_str(), path.c_str()) != 0) {
        std::remove(unfinished.c_str());
        sendText("...error: the book could not be written!\n");
        return;
    }
    sendText("...done!\n");
}

}  // namespace valku
