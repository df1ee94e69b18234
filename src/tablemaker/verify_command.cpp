#include "tablemaker/commands.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <mutex>

#include "chess/fen.h"
#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/raw_io.h"
#include "tablebases/index_layout.h"
#include "tablebases/probe.h"
#include "tablebases/table_entry.h"
#include "tablemaker/one_ply_minimax.h"
#include "tablemaker/parallel_for.h"
#include "tablemaker/progress_bar.h"
#include "tablemaker/retrograde_analysis.h"
#include "tablemaker/table_file.h"

namespace valku {

namespace {

constexpr u32 portion = 4096;  // entries that a thread takes at a time

// Values of the tables that the moves of a class lead to. Probing is for one thread only, so they are read
// beforehand.
class Successors {
  public:
    // Throws a Fault if a table is missing.
    void load(int tbClass) {
        std::vector<int> classes = classesAfter(tbClass);
        classes.push_back(tbClass);
        for (const int needed : classes) {
            const TbClass& record = classTable[needed];
            if (needed == 0) continue;
            for (const int side : {0, 1}) {
                std::vector<i16>& table = tables[needed].ofSide[record.fileSide(side)];
                if (!table.empty()) continue;
                if (record.files[record.fileSide(side)][0].name.empty())
                    throw Fault("the table of " + record.name + " is missing");
                table.resize(indexLayout(needed, side).range);
                for (u64 i = 0; i < table.size(); ++i)
                    table[i] = static_cast<i16>(readTableValue(needed, side, i));
            }
        }
    }

    // noTableValue if the table holds no value of the position.
    i32 valueOf(const Position& position) const {
        TbEntry entry;
        if (!entryOfPosition(position, entry))
            return position.whiteMen + position.blackMen == 2 ? 0 : noTableValue;
        const int side = classTable[entry.tbClass].fileSide(entry.side);
        const std::vector<i16>& table = tables.at(entry.tbClass).ofSide[side];
        return entry.index < table.size() ? table[entry.index] : noTableValue;
    }

  private:
    struct Tables {
        std::vector<i16> ofSide[2];
    };

    std::map<int, Tables> tables;
};

// The one-byte entry that is read as the value.
i32 byteOfValue(i32 value) {
    if (value == 0) return 0;
    return value > 0 ? 127 - movesToMate(value) : movesToMate(value) - 126;
}

std::string textOfByte(i32 byte) {
    if (byte == 0) return "a draw";
    if (byte == unusedTableByte) return "no value";
    return byte > 0 ? "a win in " + std::to_string(127 - byte) : "a loss in " + std::to_string(byte + 126);
}

struct WrongEntry {
    u64 index = std::numeric_limits<u64>::max();
    i32 expected = 0;
};

class EntryChecker {
  public:
    EntryChecker(const Successors& known, const TableFile& verifiedFile, const std::vector<u8>& tableBytes)
        : successors(known), file(verifiedFile), bytes(tableBytes) {}

    // `report` is called now and then, by one thread at a time, with the number of entries that have been
    // checked.
    WrongEntry firstWrong(int threads, const std::function<void(u64)>& report) {
        std::atomic<u64> done{0};
        const auto portions = static_cast<u32>((bytes.size() + portion - 1) / portion);
        parallelFor(threads, portions, [&](u32 number) {
            const u64 begin = u64{number} * portion;
            if (begin < firstFound) check(begin, std::min<u64>(bytes.size(), begin + portion));
            done += portion;
            const std::unique_lock lock(mutex, std::try_to_lock);
            if (lock) report(done);
        });
        return wrong;
    }

  private:
    void check(u64 begin, u64 end) {
        static thread_local Position position;
        for (u64 index = begin; index < end; ++index) {
            const bool used = positionOfEntry({file.tbClass, file.side, index}, position);
            const i32 expected = used ? byteOfValue(byMoves(position)) : unusedTableByte;
            if (expected == static_cast<i8>(bytes[index])) continue;
            const std::lock_guard lock(mutex);
            if (index < wrong.index) wrong = {index, expected};
            firstFound = wrong.index;
            return;
        }
    }

    i32 byMoves(Position& position) const {
        return valueByMoves(position, [&](const Position& after) { return successors.valueOf(after); });
    }

    const Successors& successors;
    const TableFile& file;
    const std::vector<u8>& bytes;
    WrongEntry wrong;
    std::atomic<u64> firstFound{wrong.index};
    std::mutex mutex;
};

std::string describe(const TableFile& file, const WrongEntry& wrong, i32 found) {
    Position position;
    std::string text =
        file.path + ": entry " + std::to_string(wrong.index) + " says " + textOfByte(found) + ", ";
    if (positionOfEntry({file.tbClass, file.side, wrong.index}, position)) {
        return text + "its moves say " + textOfByte(wrong.expected) + " (" + writeFen(position) + ")";
    }
    return text + "but stands for no legal position";
}

std::vector<std::string> tablesIn(const std::string& directory) {
    std::vector<std::string> paths;
    for (int tbClass = 1; tbClass < tbClassCount; ++tbClass) {
        for (const int side : {0, 1}) {
            if (const auto file = findTable(directory, tbClass, side)) paths.push_back(file->path);
        }
    }
    if (paths.empty()) throw Fault(directory + ": holds no tables");
    return paths;
}

// The verification of several files. A Fault tells that one of them is damaged or cannot be verified.
class Verification {
  public:
    // `entriesOfAll`: of all files.
    Verification(u64 entriesOfAll, int threadCount) : total(entriesOfAll), threads(threadCount) {}

    // Before the first file of a directory, whose tables have been registered.
    void enterDirectory() { successors = {}; }

    void verify(const TableFile& file) {
        const double startTime = steadySeconds();
        try {
            successors.load(file.tbClass);
        } catch (const Fault& fault) {
            throw Fault(file.path + ": " + fault.text());
        }
        const std::vector<u8> bytes = readTable(file);
        const WrongEntry wrong = EntryChecker(successors, file, bytes).firstWrong(threads, [&](u64 done) {
            bar.show(static_cast<double>(before + done) / static_cast<double>(total), file.path);
        });
        bar.clear();
        before += bytes.size();
        if (wrong.index < bytes.size())
            throw Fault(describe(file, wrong, static_cast<i8>(bytes[wrong.index])));
        writeStandardOutput(file.path + formatText(": %zu entries are right, %.1f s\n", bytes.size(),
                                                   steadySeconds() - startTime));
    }

  private:
    u64 total, before = 0;  // entries
    int threads;
    Successors successors;
    ProgressBar bar;
};

}  // namespace

int verifyTables(const TablesArguments& arguments) {
    std::vector<TableFile> files;
    u64 total = 0;
    int exitCode =
        forEachReportingFaults(arguments.words.empty() ? tablesIn(arguments.directory) : arguments.words,
                               [&](const std::string& path) { files.push_back(tableFileOf(path)); });
    // All lengths first: the engine's reader refuses a directory with a table that does not fit.
    exitCode |=
        forEachReportingFaults(files, [&](const TableFile& file) { total += readTable(file).size(); });
    if (exitCode != 0) return exitCode;

    Verification verification(total, arguments.threads);
    std::string registered;
    for (const TableFile& file : files) {
        std::string folder = std::filesystem::path(file.path).parent_path().string();
        if (folder.empty()) folder = ".";
        if (folder != registered) {
            if (!registerTables(folder)) return 1;
            verification.enterDirectory();
            registered = folder;
        }
        try {
            verification.verify(file);
        } catch (const Fault& fault) {
            exitCode = reportFault(fault.text());
        }
    }
    return exitCode;
}

}  // namespace valku
