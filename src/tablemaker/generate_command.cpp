#include "tablemaker/commands.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "platform/clock.h"
#include "platform/format_text.h"
#include "platform/raw_io.h"
#include "tablemaker/compressor.h"
#include "tablemaker/progress_bar.h"
#include "tablemaker/retrograde_analysis.h"
#include "tablemaker/table_file.h"

namespace valku {

namespace {

constexpr double solverShare = 0.7;  // of the work on one class; the rest is writing

class Generator {
  public:
    explicit Generator(const TablesArguments& arguments) : options(arguments) {}

    void run(const std::vector<int>& classes) {
        for (const int tbClass : classes) plan(tbClass);
        for (const int tbClass : missing) totalWork += workOn(tbClass);
        for (std::size_t i = 0; i < missing.size(); ++i) {
            make(missing[i]);
            doneWork += workOn(missing[i]);
            forgetAllBut(i + 1);
        }
        bar.clear();
        writeStandardOutput(std::to_string(missing.size()) + " classes made, " +
                            std::to_string(planned.size() - missing.size()) + " were there, in " +
                            options.directory + "\n");
    }

  private:
    // Puts the class after the classes that it depends on. The tables of those are made too, as probing needs
    // them.
    void plan(int tbClass) {
        if (tbClass == 0 || !planned.insert(tbClass).second) return;
        for (const int other : classesAfter(tbClass)) plan(other);
        bool complete = true;
        for (const int side : {0, classTable[tbClass].fileSide(1)}) {
            const auto file = findTable(options.directory, tbClass, side);
            try {
                if (file) checkTableLength(*file);
            } catch (const Fault& fault) {
                throw Fault(fault.text() + "; remove it to have it made anew");
            }
            complete = complete && file;
        }
        if (!complete) missing.push_back(tbClass);
    }

    double workOn(int tbClass) const {
        return static_cast<double>(classTable[tbClass].positions[0] + classTable[tbClass].positions[1]);
    }

    void report(int tbClass, double done) {
        bar.show((doneWork + done * workOn(tbClass)) / totalWork, classTable[tbClass].name);
    }

    // Makes the states of an ending available whose tables are there.
    void load(int tbClass) {
        if (solved.contains(tbClass)) return;
        auto ending = std::make_unique<Ending>(tbClass);
        for (const int side : {0, 1}) {
            if (tbClass == 0) continue;
            const auto file = findTable(options.directory, tbClass, classTable[tbClass].fileSide(side));
            if (!file) throw Fault(classTable[tbClass].name + ": has gone from " + options.directory);
            readStates(*ending, side, readTable(*file), options.threads);
        }
        solved[tbClass] = std::move(ending);
    }

    void make(int tbClass) {
        const double startTime = steadySeconds();
        report(tbClass, 0);
        for (const int other : classesAfter(tbClass)) load(other);
        auto ending = std::make_unique<Ending>(tbClass);
        solveEnding(*ending, solved, options.threads,
                    [&](double done) { report(tbClass, done * solverShare); });
        u64 size = 0;
        for (const int side : {0, 1}) {
            if (classTable[tbClass].fileSide(side) != side) continue;
            report(tbClass, side == 0 ? solverShare : (solverShare + 1) / 2);
            size += write(*ending, side);
        }
        reportMade(*ending, size, steadySeconds() - startTime);
        solved[tbClass] = std::move(ending);
    }

    // Returns the size of the file in bytes.
    u64 write(const Ending& ending, int side) const {
        const std::string path = tablePath(options.directory, ending.tbClass, side, options.compress);
        const std::vector<u8> bytes = tableBytes(ending, side, options.threads);
        if (options.compress) return compressTable(bytes, path, options.threads);
        writeWhole(path, bytes);
        return bytes.size();
    }

    void reportMade(const Ending& ending, u64 size, double seconds) {
        int longest = 0;
        for (const auto& states : ending.states) {
            for (const EndingState state : states) {
                if (isWin(state) || isLoss(state)) longest = std::max(longest, distanceOf(state));
            }
        }
        bar.clear();
        writeStandardOutput(formatText("%-5s longest mate %3d, %11llu bytes, %6.1f s\n",
                                       classTable[ending.tbClass].name.c_str(), longest,
                                       static_cast<unsigned long long>(size), seconds));
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
    std::vector<int> missing;  // in the order in which they are made
    SolvedEndings solved;
    double totalWork = 0, doneWork = 0;  // entries
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
            throw UsageFault(name + " is no class; the stronger side comes first, as in kqkr");
        if (menOfClass(classes.back()) > maxEndingMen + 2) throw UsageFault(name + ": six men are too many");
    }
    if (classes.empty()) throw UsageFault("generate needs classes, or --all-3 or --all-4");

    std::error_code error;
    std::filesystem::create_directories(arguments.directory, error);
    if (!std::filesystem::is_directory(arguments.directory, error))
        throw Fault(arguments.directory + ": is no directory and cannot be made one");
    Generator(arguments).run(classes);
    return 0;
}

}  // namespace valku
