#include "tablemaker/commands.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>

#include "platform/clock.h"
#include "platform/raw_io.h"
#include "tablemaker/compressor.h"
#include "tablemaker/progress_bar.h"
#include "tablemaker/solver.h"
#include "tablemaker/table_file.h"

namespace valku {

namespace {

// Shares of the work on one class: the solver's, then each file's.
constexpr double solverShare = 0.7;

class Generator {
  public:
    explicit Generator(const TablesArguments& arguments) : options(arguments) {}

    int run(const std::vector<int>& classes) {
        for (const int tbClass : classes) {
            if (!plan(tbClass)) return 1;
        }
        for (const int tbClass : missing) totalWork += workOn(tbClass);
        for (std::size_t i = 0; i < missing.size(); ++i) {
            if (!make(missing[i])) return 1;
            doneWork += workOn(missing[i]);
            forgetAllBut(i + 1);
        }
        bar.clear();
        writeStandardOutput(std::to_string(missing.size()) + " classes made, " +
                            std::to_string(planned.size() - missing.size()) + " were there, in " +
                            options.directory + "\n");
        return 0;
    }

  private:
    bool fail(const std::string& text) {
        bar.clear();
        writeErrorOutput(text + "\n");
        return false;
    }

    // Puts the class behind the classes that it needs. The tables of those are made too, as readers need
    // them.
    bool plan(int tbClass) {
        if (tbClass == 0 || !planned.insert(tbClass).second) return true;
        for (const int other : classesAfter(tbClass)) {
            if (!plan(other)) return false;
        }
        bool there = true;
        for (const int side : {0, recordOf(tbClass).fileSide(1)}) {
            const auto file = findTable(options.directory, tbClass, side);
            std::string error;
            if (file && !hasTableLength(*file, error))
                return fail(error + "; remove it to have it made anew");
            there = there && file;
        }
        if (!there) missing.push_back(tbClass);
        return true;
    }

    double workOn(int tbClass) const {
        return static_cast<double>(recordOf(tbClass).positions[0] + recordOf(tbClass).positions[1]);
    }

    void report(int tbClass, double done) {
        bar.show((doneWork + done * workOn(tbClass)) / totalWork, recordOf(tbClass).name);
    }

    // An ending that is solved or whose tables are there.
    bool load(int tbClass) {
        if (solved.contains(tbClass)) return true;
        auto ending = std::make_unique<Ending>(tbClass);
        for (const int side : {0, 1}) {
            if (tbClass == 0) continue;
            const auto file = findTable(options.directory, tbClass, recordOf(tbClass).fileSide(side));
            std::vector<u8> bytes;
            std::string error = recordOf(tbClass).name + ": has gone from " + options.directory;
            if (!file || !readTable(*file, bytes, error)) return fail(error);
            fillFromTable(*ending, side, bytes, options.threads);
        }
        solved[tbClass] = std::move(ending);
        return true;
    }

    bool make(int tbClass) {
        const double startTime = steadySeconds();
        report(tbClass, 0);
        for (const int other : classesAfter(tbClass)) {
            if (!load(other)) return false;
        }
        auto ending = std::make_unique<Ending>(tbClass);
        if (!solveEnding(*ending, solved, options.threads,
                         [&](double done) { report(tbClass, done * solverShare); })) {
            return fail(recordOf(tbClass).name + ": a mate lies too far away for the bytes of a table");
        }
        u64 size = 0;
        for (const int side : {0, 1}) {
            if (recordOf(tbClass).fileSide(side) != side) continue;
            report(tbClass, side == 0 ? solverShare : (solverShare + 1) / 2);
            const u64 written = write(*ending, side);
            if (!written) return false;
            size += written;
        }
        tell(*ending, size, steadySeconds() - startTime);
        solved[tbClass] = std::move(ending);
        return true;
    }

    // The size of the file, 0 on a failure that has been told.
    u64 write(const Ending& ending, int side) {
        const std::string path = tablePath(options.directory, ending.tbClass, side, options.compress);
        const std::vector<u8> bytes = tableOfEnding(ending, side, options.threads);
        const u64 size = options.compress          ? compressTable(bytes, path, options.threads)
                         : writeWhole(path, bytes) ? bytes.size()
                                                   : 0;
        if (!size) fail(path + ": cannot be written");
        return size;
    }

    void tell(const Ending& ending, u64 size, double seconds) {
        int longest = 0;
        for (const auto& states : ending.states) {
            for (const EndingState state : states) {
                if (isWin(state) || isLoss(state)) longest = std::max(longest, distanceOf(state));
            }
        }
        char text[96];
        std::snprintf(text, sizeof text, "%-5s longest mate %3d, %11llu bytes, %6.1f s\n",
                      recordOf(ending.tbClass).name.c_str(), longest, static_cast<unsigned long long>(size),
                      seconds);
        bar.clear();
        writeStandardOutput(text);
    }

    // Frees the endings that no class from missing[next] on needs.
    void forgetAllBut(std::size_t next) {
        std::set<int> needed;
        for (std::size_t i = next; i < missing.size(); ++i) {
            const std::vector<int> after = classesAfter(missing[i]);
            needed.insert(after.begin(), after.end());
        }
        std::erase_if(solved, [&](const auto& entry) { return !needed.contains(entry.first); });
    }

    const TablesArguments& options;
    std::set<int> planned;
    std::vector<int> missing;
    SolvedEndings solved;
    double totalWork = 0, doneWork = 0;
    ProgressBar bar;
};

}  // namespace

int generateTables(const TablesArguments& arguments) {
    std::vector<int> classes;
    const int end = arguments.all4 ? firstFiveMenClass : arguments.all3 ? firstFourMenClass : 1;
    for (int tbClass = 1; tbClass < end; ++tbClass) classes.push_back(tbClass);
    for (const std::string& name : arguments.words) {
        classes.push_back(classByName(name));
        if (classes.back() <= 0)
            throw UsageError(name + " is no class; the stronger side comes first, as in kqkr");
        if (menOfClass(classes.back()) > maxEndingMen + 2) throw UsageError(name + ": six men are too many");
    }
    if (classes.empty()) throw UsageError("generate needs classes, or --all-3 or --all-4");

    std::error_code error;
    std::filesystem::create_directories(arguments.directory, error);
    if (!std::filesystem::is_directory(arguments.directory, error)) {
        writeErrorOutput(arguments.directory + ": is no directory and cannot be made one\n");
        return 1;
    }
    return Generator(arguments).run(classes);
}

}  // namespace valku
