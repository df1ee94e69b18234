#include "book/pgn_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "chess/fen.h"
#include "chess/game.h"
#include "chess/pgn_move.h"
#include "platform/fault.h"
#include "platform/long_command.h"
#include "platform/regular_file.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

struct TagName {
    std::string_view name;
    std::string_view PgnGame::*value;
};

constexpr TagName tagNames[] = {
    {"Event", &PgnGame::event},       {"White", &PgnGame::white},       {"Black", &PgnGame::black},
    {"WhiteElo", &PgnGame::whiteElo}, {"BlackElo", &PgnGame::blackElo}, {"FEN", &PgnGame::fen},
    {"Round", &PgnGame::round},
};

struct ResultToken {
    std::string_view text;
    PgnResult result;
};

constexpr ResultToken resultTokens[] = {
    {"1-0", PgnResult::whiteWon},
    {"0-1", PgnResult::blackWon},
    {"1/2-1/2", PgnResult::draw},
};

enum CharClass : u8 { wordChar = 1, blank = 2, digit = 4, letter = 8, glyph = 16, resultChar = 32 };

// A move runs to the next character that can separate words. Whatever else is in it, such as the bytes of a
// figurine, belongs to it, so that it is refused as a whole and not read as some other move.
struct CharRow {
    std::string_view chars;
    u8 charClass;
};

constexpr CharRow charRows[] = {
    {" \t\n\v\f\r", blank},
    {"!?$", glyph},
    {"{}()[]<>;#.*,\"%", 0},
    {"-/", wordChar | resultChar},
    {"0123456789", wordChar | resultChar | digit},
};

constexpr std::array<u8, 256> makeCharClasses() {
    std::array<u8, 256> classes{};
    for (unsigned c = 0x21; c < 0x80; ++c) classes[c] = wordChar;
    for (unsigned c = 0x80; c < 0x100; ++c) classes[c] = wordChar | letter;
    for (unsigned c = 'A'; c <= 'Z'; ++c) classes[c] = classes[c - 'A' + 'a'] = wordChar | letter;
    for (const CharRow& row : charRows) {
        for (const char c : row.chars) classes[static_cast<u8>(c)] = row.charClass;
    }
    return classes;
}

constexpr std::array<u8, 256> charClasses = makeCharClasses();

bool isOf(char c, u8 charClass) {
    return (charClasses[static_cast<u8>(c)] & charClass) != 0;
}

// Cuts a text into games, in one pass: the time is linear in the size, whatever the text holds.
class PgnText {
  public:
    explicit PgnText(std::string_view text)
        : begin_(text.data() + (text.starts_with(byteOrderMark) ? byteOrderMark.size() : 0)),
          end_(text.data() + text.size()),
          at_(begin_) {}

    // False if there is no further game.
    bool readGame(PgnGame& game) {
        startGame(game);
        bool anything = false;
        while (at_ != end_) {
            const char c = *at_;
            if (quoted_ && !standsOutInQuotes(c)) {
                ++at_;
            } else if (isOf(c, letter)) {
                readMove(game);
                anything = true;
            } else if (isOf(c, digit)) {
                if (readNumberOrResult(game)) return true;
            } else if (c == '*') {
                endGame(game, PgnResult::unknown, take(at_ + 1));
                return true;
            } else if (c == '[') {
                if (startsTagLine()) {
                    if (game.plyCount != 0) return true;
                    quoted_ = false;
                }
                readTag(game);
                anything = true;
            } else if (startsComment()) {
                addComment(readComment());
            } else if (c == '"') {
                quoted_ = !quoted_;
                ++at_;
            } else if (!skipVariationOrEscapedLine()) {
                // A word that begins with a sign is skipped whole, such as +/- and what looks like a result
                // in it.
                at_ = std::max(at_ + 1, endOf(at_, wordChar));
            }
        }
        game.result = PgnResult::endOfData;
        return anything;
    }

  private:
    static constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

    void startGame(PgnGame& game) {
        game.plyCount = 0;
        for (const TagName& tag : tagNames) game.*tag.value = {};
        game.resultText = {};
        game.result = PgnResult::none;
        lastPly_ = nullptr;
        quoted_ = false;
    }

    // The text up to `to`; the next that is read comes after it.
    std::string_view take(const char* to) {
        const std::string_view text(at_, static_cast<std::size_t>(to - at_));
        at_ = to;
        return text;
    }

    const char* endOf(const char* from, u8 charClass) const {
        while (from != end_ && isOf(*from, charClass)) ++from;
        return from;
    }

    const char* find(char c) const {
        const void* found = std::memchr(at_, c, static_cast<std::size_t>(end_ - at_));
        return found ? static_cast<const char*>(found) : end_;
    }

    std::string_view rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }

    bool startsLine() const { return at_ == begin_ || at_[-1] == '\n' || at_[-1] == '\r'; }
    bool startsTagLine() const {
        return *at_ == '[' && startsLine() && at_ + 1 != end_ && isOf(at_[1], letter);
    }
    bool startsComment() const { return *at_ == '{' || (*at_ == ';' && !quoted_); }

    // No move or result is read in a quotation, but what may hold other quotation marks is skipped as
    // everywhere, and a tag line ends a quotation that was never closed.
    static bool standsOutInQuotes(char c) { return c == '"' || c == '{' || c == '(' || c == '[' || c == '%'; }

    std::string_view readComment() {
        const bool toLineEnd = *at_++ == ';';
        const std::string_view text = take(find(toLineEnd ? '\n' : '}'));
        if (at_ != end_) ++at_;
        return toLineEnd && text.ends_with('\r') ? text.substr(0, text.size() - 1) : text;
    }

    void addComment(std::string_view text) {
        if (!lastPly_) return;
        std::string_view& comment = lastPly_->comment;
        const char* const from = comment.data() ? comment.data() : text.data();
        comment = {from, static_cast<std::size_t>(text.data() + text.size() - from)};
    }

    // Skips a line that % takes out of the game, or a variation with all that is in it. False if neither
    // begins here.
    bool skipVariationOrEscapedLine() {
        if (*at_ == '%' && startsLine()) {
            at_ = find('\n');
            return true;
        }
        if (*at_ != '(') return false;
        std::size_t depth = 0;
        while (at_ != end_) {
            if (startsComment()) {
                readComment();
                continue;
            }
            if (startsTagLine()) return true;  // was never closed
            if (*at_ == '%' && startsLine()) {
                at_ = find('\n');
                continue;
            }
            const char c = *at_++;
            if (c == '"') {
                quoted_ = !quoted_;
            } else if (c == '(') {
                ++depth;
            } else if (c == ')' && --depth == 0) {
                return true;
            }
        }
        return true;
    }

    // [Name "value"]: the value is what the first and the last quotation mark enclose.
    void readTag(PgnGame& game) {
        const char* const name = ++at_;
        const char* nameEnd = nullptr;
        const char* firstQuote = nullptr;
        const char* lastQuote = nullptr;
        bool quoted = false;
        for (; at_ != end_ && *at_ != '\n' && *at_ != '\r' && (quoted || *at_ != ']'); ++at_) {
            if (*at_ == '"') {
                quoted = !quoted;
                lastQuote = at_;
                if (!firstQuote) firstQuote = at_;
            }
            if (!nameEnd && (*at_ == '"' || isOf(*at_, blank))) nameEnd = at_;
        }
        if (at_ != end_ && *at_ == ']') ++at_;
        if (firstQuote == lastQuote || game.plyCount != 0) return;
        const std::string_view nameText(name, static_cast<std::size_t>(nameEnd - name));
        for (const TagName& tag : tagNames) {
            if (tag.name == nameText)
                game.*tag.value = {firstQuote + 1, static_cast<std::size_t>(lastQuote - firstQuote - 1)};
        }
    }

    void readMove(PgnGame& game) {
        if (skipEnPassantMark()) return;
        std::string_view text = take(endOf(at_, wordChar));
        // The mark may also follow the move without a blank.
        if (text.size() > 1 && text.ends_with('e') && rest().starts_with(".p.")) {
            text.remove_suffix(1);
            at_ += 3;
        }
        while (at_ != end_ && *at_ == '#') ++at_;
        lastPly_ = nullptr;
        if (game.plyCount == PgnGame::maxPlies) return;
        lastPly_ = &game.plies[game.plyCount++];
        *lastPly_ = {text, readGlyphs(), {}};
    }

    bool skipEnPassantMark() {
        constexpr std::string_view mark = "e.p.";
        if (*at_ != 'e' || !rest().starts_with(mark)) return false;
        at_ += mark.size();
        return true;
    }

    std::string_view readGlyphs() {
        const char* from = endOf(at_, blank);
        const char* to = from;
        for (const char* next = from; next != end_ && isOf(*next, glyph); next = endOf(to, blank))
            to = *next == '$' ? endOf(next + 1, digit) : next + 1;
        at_ = from;
        return take(to);
    }

    // True if it was the result. Castling written with zeros is left to the conversion to refuse: skipped
    // like a number, it would give the moves after it to the wrong side.
    bool readNumberOrResult(PgnGame& game) {
        const char* const numberEnd = endOf(at_, digit);
        if (numberEnd == end_ || !isOf(*numberEnd, resultChar)) {
            at_ = numberEnd;
            return false;
        }
        const char* const tokenEnd = endOf(at_, resultChar);
        const std::string_view token(at_, static_cast<std::size_t>(tokenEnd - at_));
        for (const ResultToken& row : resultTokens) {
            if (row.text == token) {
                endGame(game, row.result, take(tokenEnd));
                return true;
            }
        }
        if (token.starts_with("0-0")) {
            readMove(game);
        } else {
            at_ = tokenEnd;
        }
        return false;
    }

    void endGame(PgnGame& game, PgnResult result, std::string_view text) {
        game.result = result;
        game.resultText = text;
        findNextGame();
    }

    // After a result: to the next tag, or to the first move of a game without tags.
    void findNextGame() {
        while (at_ != end_ && *at_ != '[') {
            if (startsComment()) {
                readComment();
            } else if (!skipVariationOrEscapedLine()) {
                if (*at_ == '1' && isOf(at_[-1], blank) && rest().starts_with("1.")) return;
                ++at_;
            }
        }
    }

    const char* const begin_;
    const char* const end_;
    const char* at_;
    bool quoted_ = false;              // a quotation mark in the game is still open
    PgnGame::Ply* lastPly_ = nullptr;  // of which comments are; null before the first move
};

bool setStart(const PgnGame& game) {
    if (game.fen.empty()) return readFen(startPositionFen);
    constexpr std::size_t longestFen = 256;
    const std::string_view fen = game.fen.substr(0, longestFen);
    if (readFen(fen)) return true;
    sendText("Error: the FEN of a game cannot be read: " + std::string(fen) + "\n");
    return false;
}

// False if the visitor ends the walk.
bool walkGame(const PgnGame& game, const PgnVisitor& perMove, i32 plyLimit) {
    const i32 plies = std::min(game.plyCount, plyLimit);
    for (i32 ply = 0; ply < plies; ++ply) {
        const char* complaint;
        const Move move = convertPGNMove2move(game.plies[ply].move, &complaint);
        if (move == nullMove) {
            sendText(complaint);
            return true;
        }
        if (!perMove({gamePosition, move, ply, game})) return false;
        playGameMove(move);
    }
    return true;
}

void tellProgress(i64 games) {
    sendText("Went through " + std::to_string(games) + " games...\n");
}

// The bytes of a file. Of one that cannot be read to its end, the part is there that can.
class FileText {
  public:
    explicit FileText(const std::string& path) {
        std::ifstream file = openRegularFile(path);
        const std::streamoff length = file.is_open() ? lengthOf(file) : -1;
        if (length >= 0) bytes.reset(new (std::nothrow) char[static_cast<std::size_t>(length) + 1]);
        if (!bytes) throw Fault("Could not open file " + path + "!");
        file.read(bytes.get(), length);
        size = static_cast<std::size_t>(file.gcount());
    }

    std::string_view text() const { return {bytes.get(), size}; }

  private:
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

}  // namespace

bool walkPgnFile(const std::string& path, const PgnVisitor& perMove, i32 plyLimit,
                 const std::function<void()>& atEnd) {
    const FileText file(path);
    PgnText text(file.text());
    PgnGame game;
    i64 games = 0;
    while (!commandStopped() && text.readGame(game)) {
        if (setStart(game) && !walkGame(game, perMove, plyLimit)) return false;
        if (++games % 1000 == 0) tellProgress(games);
    }
    atEnd();
    tellProgress(games);
    return true;
}

}  // namespace valku
