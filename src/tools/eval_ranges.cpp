#include "tools/eval_ranges.h"

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>

#include "chess/fen.h"
#include "chess/game.h"
#include "platform/clock.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/text_sink.h"
#include "thinking/search_control.h"
#include "tools/file_line.h"
#include "tools/position_values.h"

namespace valku {

namespace {

struct Expectation {
    std::string first;
    std::string second;
    i64 low = 0;
    i64 high = 0;
};

struct Breach {
    Expectation expected;
    i32 firstValue;
    i32 secondValue;
    i64 diff;
    i64 abs;
};

struct GreaterBreach {
    bool operator()(const Breach& a, const Breach& b) const {
        return std::tie(b.abs, a.expected.first, a.expected.second) <
               std::tie(a.abs, b.expected.first, b.expected.second);
    }
};

struct Totals {
    u64 count = 0;
    u64 wrong = 0;
    u64 diffSum = 0;
    u64 squaredSum = 0;
    u64 unreadable = 0;
    std::set<Breach, GreaterBreach> breaches;
};

bool readFilledLine(std::istream& file, std::string& line) {
    while (readLine(file, line)) {
        if (!line.empty()) return true;
    }
    return false;
}

bool readNumbers(const std::string& line, Expectation& expectation) {
    std::istringstream numbers(line);
    return static_cast<bool>(numbers >> expectation.low >> expectation.high);
}

// The value of a position, 0 for the text "0". False if it is no position.
bool readValue(const std::string& text, i32& value) {
    value = 0;
    if (text == "0") return true;
    if (!readFen(text)) return false;
    value = quiescenceValue(gamePosition);
    return true;
}

void judge(const Expectation& expectation, Totals& totals) {
    i32 firstValue;
    i32 secondValue;
    if (!readValue(expectation.first, firstValue) || !readValue(expectation.second, secondValue)) {
        ++totals.unreadable;
        return;
    }
    ++totals.count;
    const i64 diff = i64{firstValue} - secondValue;
    if (diff >= expectation.low && diff <= expectation.high) return;
    const i64 abs = diff < expectation.low ? expectation.low - diff : diff - expectation.high;
    ++totals.wrong;
    totals.diffSum += static_cast<u64>(abs);
    totals.squaredSum += static_cast<u64>(abs) * static_cast<u64>(abs);
    totals.breaches.insert({expectation, firstValue, secondValue, diff, abs});
}

void readExpectations(std::istream& file, Totals& totals) {
    Expectation expectation;
    std::string numbers;
    while (!commandStopped() && readFilledLine(file, expectation.first) &&
           readFilledLine(file, expectation.second) && readFilledLine(file, numbers)) {
        if (readNumbers(numbers, expectation)) {
            judge(expectation, totals);
        } else {
            ++totals.unreadable;
        }
    }
}

void report(const Totals& totals, double seconds) {
    const double share =
        totals.count == 0 ? 0 : 100.0 * static_cast<double>(totals.wrong) / static_cast<double>(totals.count);
    std::ostringstream text;
    text << "Eval was wrong in " << totals.wrong << " positions of " << totals.count
         << formatText(" (%.2f%%)", share) << ". Diffsum = " << totals.diffSum
         << ", SquaredSum = " << totals.squaredSum << formatText(". \n Took %.2fs.\n", seconds);
    sendText(text.str());
    if (totals.unreadable)
        sendText("Skipped " + std::to_string(totals.unreadable) + " records that cannot be read.\n");
}

void write(const Breach& breach, std::ostream& output) {
    output << breach.expected.first << '\n'
           << breach.expected.second << '\n'
           << "eval 1st = " << breach.firstValue << ", eval 2nd = " << breach.secondValue
           << ", diff = " << breach.diff << " [" << breach.expected.low << ',' << breach.expected.high
           << "], abs = " << breach.abs << "\n\n";
}

}  // namespace

void testEvalAgainstFile(const std::string& file) {
    stopThinking();
    std::ifstream input(file);
    std::ofstream output;
    if (input) output.open(file + ".out");
    if (!input || !output) throw Fault("Error in testEvalAgainstFile!");
    const double began = steadySeconds();
    const KeptGame keptGame;
    const LongCommand longCommand;
    Totals totals;
    readExpectations(input, totals);
    report(totals, steadySeconds() - began);
    for (const Breach& breach : totals.breaches) write(breach, output);
    output.close();
    if (!output) throw Fault("Error: could not write " + file + ".out!");
}

}  // namespace valku
