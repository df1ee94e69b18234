#include "tools/learn_matrix.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "chess/fen.h"
#include "chess/move_generation.h"
#include "chess/side.h"
#include "eval/game_phase.h"
#include "platform/fault.h"
#include "platform/file_replacement.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/raw_io.h"
#include "platform/regular_file.h"
#include "platform/shut_down.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "thinking/search_control.h"
#include "tools/file_line.h"

namespace valku {

namespace {

// A block of columns that stand for squares holds whole ranks, counted from the side's own first rank.
struct Ranks {
    int first;
    int last;

    constexpr int count() const { return last - first + 1; }
    constexpr bool contain(int rank) const { return first <= rank && rank <= last; }
};

constexpr Ranks allRanks{0, 7};
constexpr Ranks pawnRanks{1, 6};
constexpr Ranks passedPawnRanks{1, 5};  // on the seventh rank every pawn is passed
constexpr int files = 8;

// The two matrices differ in the columns of the kings.
struct Phase {
    Ranks kingRanks;

    constexpr int columns() const {
        constexpr int doubledAndIsolated = 2;
        constexpr int mobility = 1;
        return files * (pawnRanks.count() + 4 * allRanks.count() + kingRanks.count() +
                        passedPawnRanks.count() + doubledAndIsolated) +
               mobility;
    }
};

constexpr Phase middlegame{{0, 3}};
constexpr Phase endgame{allRanks};
static_assert(middlegame.columns() == 393 && endgame.columns() == 425);

// The border between the two phases; not the setting of the evaluation, whose default it equals.
constexpr i32 mostEndgameMaterial = 5200;

template <Color Us>
bool isPassed(const Position& p, int pawn) {
    using S = Side<Us>;
    for (const u8* enemy = pawnsOf<S::Them>(p); *enemy != noSquare; ++enemy) {
        const int aside = fileOf(*enemy) - fileOf(pawn);
        if (aside >= -1 && aside <= 1 && S::relativeRank(*enemy) > S::relativeRank(pawn)) return false;
    }
    return true;
}

// The columns of a row without the mobility, in groups of eight; eight zeros are by far the most common
// group.
using Eight = std::array<i8, files>;
using Columns = std::array<Eight, endgame.columns() / files>;

// Adds the features of one side, block by block: +1 for each of White's, -1 for each of Black's.
template <Color Us>
class SideColumns {
  public:
    SideColumns(const Position& position, Columns& columns) : p(position), block(columns.data()) {}

    void add(const Phase& phase) {
        addMen(pawnsOf<Us>(p), pawnRanks);
        addMen(knightsOf<Us>(p), allRanks);
        addMen(bishopsOf<Us>(p), allRanks);
        addMen(rooksOf<Us>(p), allRanks);
        addMen(queensOf<Us>(p), allRanks);
        mark(kingOf<Us>(p), phase.kingRanks);
        block += phase.kingRanks.count();
        addPassedPawns();
        addDoubledPawns();
        addIsolatedPawns();
    }

  private:
    using S = Side<Us>;

    static void tally(i8& cell, int number) {
        cell = static_cast<i8>(Us == White ? cell + number : cell - number);
    }

    void mark(int square, Ranks ranks) {
        const int rank = S::relativeRank(square);
        if (ranks.contain(rank)) tally(block[rank - ranks.first][index(fileOf(square))], 1);
    }

    void addMen(const u8* list, Ranks ranks) {
        for (; *list != noSquare; ++list) mark(*list, ranks);
        block += ranks.count();
    }

    void addPassedPawns() {
        for (const u8* pawn = pawnsOf<Us>(p); *pawn != noSquare; ++pawn) {
            if (isPassed<Us>(p, *pawn)) mark(*pawn, passedPawnRanks);
        }
        block += passedPawnRanks.count();
    }

    void addDoubledPawns() {
        for (int file = 0; file < files; ++file) tally((*block)[index(file)], std::max(pawnsOn(file) - 1, 0));
        ++block;
    }

    void addIsolatedPawns() {
        for (int file = 0; file < files; ++file) {
            const bool alone = pawnsOn(file - 1) == 0 && pawnsOn(file + 1) == 0;
            if (alone) tally((*block)[index(file)], pawnsOn(file));
        }
        ++block;
    }

    int pawnsOn(int file) const { return file >= 0 && file < files ? pawnsOnFileOf<Us>(p)[file] : 0; }
    static std::size_t index(int file) { return static_cast<std::size_t>(file); }

    const Position& p;
    Eight* block;  // where the next block of columns begins
};

// Of searchPosition, whose side to move is overwritten.
i32 mobilityOf(Color side) {
    MoveList list;
    searchPosition.sideToMove = side;
    generateCaptures(list, 0);
    return list.mobility;
}

// Every cell has one digit: no side has more than eight pawns.
char* writeEight(char* to, const Eight& cells) {
    for (const i8 cell : cells) {
        *to = '-';
        to += cell < 0;
        *to++ = static_cast<char>('0' + std::abs(cell));
        *to++ = ' ';
    }
    return to;
}

// The row of searchPosition as a line of text, which is valid until the next call.
std::string_view rowText(const Phase& phase, i32 value) {
    static constexpr Eight zeros{};
    static constexpr std::string_view zerosText = "0 0 0 0 0 0 0 0 ";
    static constexpr std::size_t roomPerNumber = 12;
    static std::array<char, (endgame.columns() + 1) * roomPerNumber> text;

    Columns columns{};
    SideColumns<White>(searchPosition, columns).add(phase);
    SideColumns<Black>(searchPosition, columns).add(phase);
    char* to = text.data();
    for (int i = 0; i < phase.columns() / files; ++i) {
        const Eight& cells = columns[static_cast<std::size_t>(i)];
        to = cells == zeros ? std::copy(zerosText.begin(), zerosText.end(), to) : writeEight(to, cells);
    }
    to = std::to_chars(to, to + roomPerNumber, mobilityOf(White) - mobilityOf(Black)).ptr;
    *to++ = ' ';
    to = std::to_chars(to, to + roomPerNumber, value).ptr;
    *to++ = '\n';
    return {text.data(), static_cast<std::size_t>(to - text.data())};
}

// Shows a person at the terminal that the work goes on. Nothing is written to a standard error that is no
// terminal.
class Progress {
  public:
    explicit Progress(const char* work) : name(work) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() {
        if (shown) writeErrorOutput("\n");
    }

    void step() {
        constexpr u64 stepsPerReport = 100000;
        if (++steps % stepsPerReport != 0 || !wanted) return;
        writeErrorOutput(std::string("\r") + name + " " + std::to_string(steps));
        shown = true;
    }

  private:
    const char* name;
    const bool wanted = errorOutputIsTerminal();
    bool shown = false;
    u64 steps = 0;
};

// A learn file, read to its end or to the first empty line in the place of a FEN.
class LearnFile {
  public:
    // Only a regular file, which can be read twice.
    bool open(const std::string& name) {
        file = openRegularFile(name);
        return file.is_open();
    }

    void restart() {
        file.clear();
        file.seekg(0);
        skipped = 0;
    }

    // Sets searchPosition to the next position whose value is close enough to 0 to be used. False at the end.
    bool next() {
        constexpr i32 mostValue = 150;
        while (!commandStopped() && readLine(file, fen) && !fen.empty() && readLine(file, number)) {
            value = readNumber(number);
            if (value < -mostValue || value > mostValue) continue;
            if (readFenMen(fen, searchPosition)) return true;
            ++skipped;
        }
        return false;
    }

    // True after a read error.
    bool hasFailed() const { return file.bad(); }

    i32 value = 0;    // of the position that next() has found
    i32 skipped = 0;  // positions whose FEN cannot be read

  private:
    std::ifstream file;
    std::string fen, number;
};

// A matrix that is being written; it replaces the old file in one step at the end.
class MatrixFile {
  public:
    MatrixFile(const Phase& rowPhase, const std::string& name) : phase(rowPhase), file(name) {
        std::error_code error;
        isOpen_ = file.isOpen() && !std::filesystem::is_directory(name, error);
    }

    // False if the file may not be written.
    bool isOpen() const { return isOpen_; }

    void writeHead() { file.write(std::to_string(rows) + ' ' + std::to_string(phase.columns()) + '\n'); }

    // Writes the row of searchPosition. False after a write error.
    bool writeRow(i32 value) {
        file.write(rowText(phase, value));
        ++written;
        return file.isGood();
    }

    bool hasAllRows() const { return written == rows; }

    // False if anything could not be written.
    bool complete() { return file.complete(); }
    bool putInPlace() { return file.putInPlace(); }

    u64 rows = 0;  // counted before the head is written

  private:
    const Phase& phase;
    FileReplacement file;
    bool isOpen_;
    u64 written = 0;
};

class Conversion {
  public:
    Conversion(const std::string& learnName, const std::string& matrixName)
        : learnFileOpen(!matrixName.empty() && learnFile.open(learnName)),
          middlegameFile(middlegame, learnFileOpen ? matrixName + ".mg" : ""),
          endgameFile(endgame, learnFileOpen ? matrixName + ".eg" : "") {
        if (!learnFileOpen || !middlegameFile.isOpen() || !endgameFile.isOpen())
            throw Fault("Could not open learn file or matrix file!");
    }

    void run() {
        countRows();
        const bool rowsWritten = writeRows();
        if (shutDownBegun) return;
        if (commandStopped()) throw Fault("Stopped: no matrix has been written.");
        if (!rowsWritten || !middlegameFile.complete() || !endgameFile.complete()) throw Fault(writeError);
        if (learnFile.hasFailed() || !middlegameFile.hasAllRows() || !endgameFile.hasAllRows())
            throw Fault("Error: the learn file could not be read, or was changed meanwhile!");
        if (!middlegameFile.putInPlace() || !endgameFile.putInPlace()) throw Fault(writeError);
        if (learnFile.skipped)
            sendText(formatText("Skipped %i positions whose FEN cannot be read.\n", learnFile.skipped));
    }

  private:
    static constexpr const char* writeError = "Error: the matrix files could not be written!";

    MatrixFile& fittingFile() {
        return isMiddlegame(searchPosition, mostEndgameMaterial) ? middlegameFile : endgameFile;
    }

    // The head of a matrix, with the number of rows, comes before them. Reading the learn file twice is
    // cheaper than copying the rows, which are more than ten times as long.
    void countRows() {
        Progress progress("counted:");
        while (learnFile.next()) {
            ++fittingFile().rows;
            progress.step();
        }
    }

    bool writeRows() {
        Progress progress("written:");
        middlegameFile.writeHead();
        endgameFile.writeHead();
        learnFile.restart();
        while (learnFile.next()) {
            if (!fittingFile().writeRow(learnFile.value)) return false;
            progress.step();
        }
        return true;
    }

    LearnFile learnFile;
    const bool learnFileOpen;
    MatrixFile middlegameFile;
    MatrixFile endgameFile;
};

}  // namespace

void learnFileToMatrix(std::string_view arguments) {
    stopThinking();
    const std::string learnName(takeWord(arguments));
    const std::string matrixName(takeWord(arguments));
    const LongCommand longCommand;
    Conversion(learnName, matrixName).run();
}

}  // namespace valku
