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
#include "platform/file_replacement.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/raw_io.h"
#include "platform/shut_down.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "thinking/search_control.h"

namespace valku {

namespace {

// A block of columns that stand for squares holds whole ranks, told from the own side.
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

// The two matrices differ in what they tell of the kings.
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

constexpr Phase middleGame{{0, 3}};
constexpr Phase ending{allRanks};
static_assert(middleGame.columns() == 393 && ending.columns() == 425);

// The matrices part at a material of their own, whatever the setting of the evaluation is.
constexpr i32 endingMaterial = 5200;

template <Color Us>
bool isPassed(const Position& p, int pawn) {
    using S = Side<Us>;
    for (const u8* enemy = pawnsOf<S::Them>(p); *enemy != noSquare; ++enemy) {
        const int aside = fileOf(*enemy) - fileOf(pawn);
        if (aside >= -1 && aside <= 1 && S::relativeRank(*enemy) > S::relativeRank(pawn)) return false;
    }
    return true;
}

// The columns of a row but for the mobility, in rows of eight; eight zeros in a row are by far the commonest.
using Eight = std::array<i8, files>;
using Columns = std::array<Eight, ending.columns() / files>;

// Adds what one side has, block by block: White counts up, Black counts down.
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

// Of searchPosition, whose side to move is lost.
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

// The line of searchPosition. The text is valid until the next call.
std::string_view rowText(const Phase& phase, i32 value) {
    static constexpr Eight zeros{};
    static constexpr std::string_view zerosText = "0 0 0 0 0 0 0 0 ";
    static constexpr std::size_t roomPerNumber = 12;
    static std::array<char, (ending.columns() + 1) * roomPerNumber> text;

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

// Tells a person at the terminal that the work goes on; a program that reads our standard error is spared it.
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
    // Only a regular file is taken: the work goes through it twice.
    bool open(const std::string& name) {
        std::error_code error;
        if (std::filesystem::is_regular_file(name, error)) file.open(name, std::ios::binary);
        return file.is_open();
    }

    void restart() {
        file.clear();
        file.seekg(0);
        skipped = 0;
    }

    // Sets searchPosition to the next position that is close enough to be used. False at the end.
    bool next() {
        constexpr i32 mostValue = 150;
        while (!commandStopped() && readLine(fen) && !fen.empty() && readLine(number)) {
            value = readNumber(number);
            if (value < -mostValue || value > mostValue) continue;
            if (readFenMen(fen, searchPosition)) return true;
            ++skipped;
        }
        return false;
    }

    // The file could not be read where it should go on.
    bool hasFailed() const { return file.bad(); }

    i32 value = 0;    // of the position that next() has found
    i32 skipped = 0;  // positions whose FEN cannot be read

  private:
    bool readLine(std::string& line) {
        if (!std::getline(file, line)) return false;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        return true;
    }

    std::ifstream file;
    std::string fen, number;
};

// A matrix on its way to the disk.
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
          middleGameFile(middleGame, learnFileOpen ? matrixName + ".mg" : ""),
          endingFile(ending, learnFileOpen ? matrixName + ".eg" : "") {}

    bool isOpen() const { return learnFileOpen && middleGameFile.isOpen() && endingFile.isOpen(); }

    // What is to be told at the end; empty if there is nothing.
    std::string run() {
        countRows();
        const bool rowsWritten = writeRows();
        if (shutDownBegun) return "";
        if (commandStopped()) return "Stopped: no matrix has been written.\n";
        if (!rowsWritten || !middleGameFile.complete() || !endingFile.complete())
            return "Error: the matrix files could not be written!\n";
        if (learnFile.hasFailed() || !middleGameFile.hasAllRows() || !endingFile.hasAllRows())
            return "Error: the learn file could not be read, or was changed meanwhile!\n";
        if (!middleGameFile.putInPlace() || !endingFile.putInPlace())
            return "Error: the matrix files could not be written!\n";
        if (learnFile.skipped == 0) return "";
        return formatText("Skipped %i positions whose FEN cannot be read.\n", learnFile.skipped);
    }

  private:
    MatrixFile& fittingFile() {
        return isMiddlegame(searchPosition, endingMaterial) ? middleGameFile : endingFile;
    }

    // The head of a matrix stands before its rows and tells their number. To go through the learn file once
    // more for it is cheaper than to copy the rows, which are more than ten times as long.
    void countRows() {
        Progress progress("counted:");
        while (learnFile.next()) {
            ++fittingFile().rows;
            progress.step();
        }
    }

    bool writeRows() {
        Progress progress("written:");
        middleGameFile.writeHead();
        endingFile.writeHead();
        learnFile.restart();
        while (learnFile.next()) {
            if (!fittingFile().writeRow(learnFile.value)) return false;
            progress.step();
        }
        return true;
    }

    LearnFile learnFile;
    const bool learnFileOpen;
    MatrixFile middleGameFile;
    MatrixFile endingFile;
};

}  // namespace

void learnFileToMatrix(std::string_view arguments) {
    stopThinking();
    const std::string learnName(takeWord(arguments));
    const std::string matrixName(takeWord(arguments));
    const LongCommand longCommand;
    Conversion conversion(learnName, matrixName);
    if (!conversion.isOpen()) {
        sendText("Could not open learn file or matrix file!\n");
        return;
    }
    const std::string report = conversion.run();
    if (!report.empty()) sendText(report);
}

}  // namespace valku
