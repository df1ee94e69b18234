#include "book/book_import.h"

#include <cctype>
#include <fstream>
#include <optional>
#include <string_view>

#include "book/book_report.h"
#include "book/dialog.h"
#include "book/opening_book.h"
#include "book/pgn_reader.h"
#include "book/text_book.h"
#include "chess/fen.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/regular_file.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"

namespace valku {

namespace {

constexpr std::string_view valueAnswers = "0abcdefg";
constexpr char leaveOut = '0';

constexpr const char* inputEnded = "Error: the input ended before all questions were answered!";

// The text book's dialog.

struct TextImport {
    TextBookValues values;
    Overwrite overwrite = Overwrite::keep;
};

std::optional<TextImport> askTextImport() {
    constexpr std::string_view complaint = "Value must be zero or in the range from a-g!\n";
    Dialog dialog;
    TextImport import;
    const auto ask = [&](char textValue, const std::string& question) {
        const std::optional<char> answer = dialog.askCharacter(question, valueAnswers, complaint);
        if (answer) import.values[textValue] = *answer;
        return answer.has_value();
    };
    for (char value = bestBookValue; value <= worstBookValue; ++value) {
        if (!ask(value,
                 formatText(
                     "Please enter the import value for moves with value '%c' (0: ignore those moves)\n",
                     value)))
            return std::nullopt;
    }
    if (!ask('-', "Please enter a value from a-g for moves with '-' (0: ignore those moves)\n") ||
        !ask(noTextValue, "Please enter a value from a-g for moves without value (0: ignore those moves)\n"))
        return std::nullopt;
    const std::optional<std::string> mode = dialog.askLine(
        "Enter overwrite mode if a move already exists in the book (0: keep, 1: replace, 2: cond. "
        "replace)\n");
    if (!mode) return std::nullopt;
    import.overwrite = static_cast<Overwrite>(readNumber(*mode));
    return import;
}

// The games' dialog.

struct SideImport {
    char value = leaveOut;  // of moves without a glyph; leaveOut for none of the side's moves at all
    Overwrite overwrite = Overwrite::keep;
};

struct PgnImport {
    SideImport white;
    SideImport black;
    i32 plyLimit = 0;
};

std::optional<SideImport> askSide(Dialog& dialog, const char* side) {
    const std::optional<char> value = dialog.askCharacter(
        formatText(
            "Please enter the default value for %s moves without comment (value a-g; 0=ignore %s moves):",
            side, side),
        valueAnswers, "The value has to be zero or between 'a' and 'g'!\n");
    if (!value) return std::nullopt;
    if (*value == leaveOut) return SideImport{};
    const std::optional<char> overwrite = dialog.askCharacter(
        formatText(
            "Please enter the overwrite behavior for %s moves (0=keep old value, 1=always, 2=if better, "
            "3=if worse) :",
            side),
        "0123", "The value has to be between 0 and 3!\n");
    if (!overwrite) return std::nullopt;
    return SideImport{*value, static_cast<Overwrite>(*overwrite - '0')};
}

std::optional<i32> askPlyLimit(Dialog& dialog) {
    for (;;) {
        const std::optional<std::string> answer = dialog.askLine(formatText(
            "Up to which ply shall the moves be imported? (max = %i; attention: 1 move = 2 plies!)",
            PgnGame::maxPlies));
        if (!answer) return std::nullopt;
        const i32 plies = readNumber(*answer);
        if (plies >= 1 && plies <= PgnGame::maxPlies) return plies;
        sendText(formatText("The value has to be between 1 and %i!\n", PgnGame::maxPlies));
    }
}

std::optional<PgnImport> askPgnImport() {
    Dialog dialog;
    const std::optional<SideImport> white = askSide(dialog, "white");
    if (!white) return std::nullopt;
    const std::optional<SideImport> black = askSide(dialog, "black");
    if (!black) return std::nullopt;
    const std::optional<i32> plyLimit = askPlyLimit(dialog);
    if (!plyLimit) return std::nullopt;
    return PgnImport{*white, *black, *plyLimit};
}

struct GlyphValue {
    std::string_view glyph;
    std::string_view nag;
    char value;
};

constexpr GlyphValue glyphValues[] = {
    {"!!", "$3", 'a'}, {"!", "$1", 'b'}, {"!?", "$5", 'c'},
    {"?!", "$6", 'e'}, {"?", "$2", 'f'}, {"??", "$4", 'g'},
};

// Takes the next glyph out of the text: a run of ! and ?, or $ with its digits. Empty if there is none.
std::string_view takeGlyph(std::string_view& text) {
    const auto isMark = [](char c) { return c == '!' || c == '?'; };
    while (!text.empty() && !isMark(text.front()) && text.front() != '$') text.remove_prefix(1);
    std::size_t size = text.empty() ? 0 : 1;
    const bool nag = size && text.front() == '$';
    while (size < text.size() &&
           (nag ? std::isdigit(static_cast<unsigned char>(text[size])) != 0 : isMark(text[size])))
        ++size;
    const std::string_view glyph = text.substr(0, size);
    text.remove_prefix(size);
    return glyph;
}

// Of the first glyph that stands for a value.
char valueOf(std::string_view glyphs, char otherwise) {
    for (std::string_view glyph = takeGlyph(glyphs); !glyph.empty(); glyph = takeGlyph(glyphs)) {
        for (const GlyphValue& row : glyphValues) {
            if (row.glyph == glyph || row.nag == glyph) return row.value;
        }
    }
    return otherwise;
}

void addPgnMove(const PgnPly& ply, const PgnImport& import) {
    const SideImport& side = ply.position.sideToMove == White ? import.white : import.black;
    if (side.value == leaveOut) return;
    addBookMove(ply.position, ply.move, valueOf(ply.game.plies[ply.ply].glyphs, side.value), side.overwrite);
}

}  // namespace

void importTextBook(const std::string& path) {
    readFen(startPositionFen);
    std::ifstream text = openRegularFile(path);
    if (!text.is_open()) {
        sendText("Error: file does not exist!\n");
        return;
    }
    sendText(formatText("Current book contains %i positions with %i moves.\n", bookSize.positions,
                        bookSize.moves));
    const std::optional<TextImport> import = askTextImport();
    if (!import) {
        sendText(std::string(inputEnded) + "\n");
        return;
    }
    sendText("Importing opening book...\n");
    const LongCommand longCommand;
    const BookGrowth growth;
    readTextBook(text, import->values, import->overwrite);
    readFen(startPositionFen);
    growth.report();
}

void importPgnBook(const std::string& path, void (*beginGames)()) {
    if (!openRegularFile(path).is_open()) throw Fault("Error: could not open " + path + "!");
    const std::optional<PgnImport> import = askPgnImport();
    if (!import) throw Fault(inputEnded);
    beginGames();
    const LongCommand longCommand;
    const auto visitor = [&](const PgnPly& ply) {
        addPgnMove(ply, *import);
        return true;
    };
    walkPgnFile(path, visitor, import->plyLimit);
}

}  // namespace valku
