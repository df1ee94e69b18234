#include "tools/engine_labels.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include "chess/attacks.h"
#include "chess/fen.h"
#include "chess/game.h"
#include "chess/move_generation.h"
#include "platform/clock.h"
#include "platform/fault.h"
#include "platform/format_text.h"
#include "platform/long_command.h"
#include "platform/process.h"
#include "platform/text_scan.h"
#include "platform/text_sink.h"
#include "thinking/search_control.h"
#include "tools/file_line.h"

namespace valku {

namespace {

// The number at the start of a text, blanks before it skipped.
std::optional<i32> numberAt(std::string_view text) {
    skipSeparators(text);
    return takeNumber<i32>(text);
}

struct Arguments {
    std::string engine;
    std::string input;
    i32 depth;
    std::string output;
    i32 patienceSeconds;
};

// A number above 0; `complaint` if the word is none.
i32 readCount(std::string_view word, const char* complaint) {
    const i32 count = wholeNumber<i32>(word).value_or(0);
    if (count <= 0) throw Fault(complaint);
    return count;
}

Arguments readArguments(std::string_view text) {
    constexpr std::string_view standardPatience = "60";
    constexpr i32 mostPatienceSeconds = 1'000'000;
    Arguments arguments;
    arguments.engine = takeWord(text);
    arguments.input = takeWord(text);
    const std::string_view depth = takeWord(text);
    arguments.output = takeWord(text);
    const std::string_view patience = takeWord(text);
    if (arguments.output.empty() || !takeWord(text).empty())
        throw Fault("usage: callengine <engine> <input> <depth> <output> [<seconds of patience>]");
    arguments.depth = readCount(depth, "Error: the depth must be a number above 0!");
    const i32 seconds = readCount(patience.empty() ? standardPatience : patience,
                                  "Error: the patience must be a number of seconds above 0!");
    arguments.patienceSeconds = std::min(seconds, mostPatienceSeconds);
    return arguments;
}

// The other engine, a child process. Any program can be named as one, so it may end, fall silent, stop
// reading or write without end.
class OtherEngine {
  public:
    explicit OtherEngine(i32 seconds) : patienceSeconds(seconds) {}
    OtherEngine(const OtherEngine&) = delete;
    OtherEngine& operator=(const OtherEngine&) = delete;
    ~OtherEngine() { dismiss(); }

    // After start() or search() has returned false, the engine is of no more use. fault() says why; it is
    // empty if the command has been stopped.
    const std::string& fault() const { return faultText; }

    bool start(const std::string& program) {
        if (!child.start(program, {})) return fail("could not be started");
        if (!say("uci\n")) return false;
        while (nextLine()) {
            if (line == "uciok") return true;
        }
        return false;
    }

    bool search(const std::string& fen, i32 depth) {
        constexpr std::string_view mark = "score cp";
        lastScore.reset();
        answerSize = 0;
        if (!say("position fen " + fen + "\ngo depth " + std::to_string(depth) + "\n")) return false;
        while (nextLine()) {
            const std::size_t at = line.rfind(mark);
            if (at != std::string_view::npos) lastScore = numberAt(line.substr(at + mark.size()));
            if (line.find("bestmove ") != std::string_view::npos) return true;
        }
        return false;
    }

    // The last score of the search in hundredths of a pawn, from the side to move's view; nothing if it has
    // given none.
    std::optional<i32> score() const { return lastScore; }

  private:
    static constexpr std::size_t mostLineSize = std::size_t{1} << 20;
    static constexpr std::size_t mostAnswerSize = std::size_t{1} << 26;

    bool fail(const char* why) {
        faultText = why;
        return false;
    }

    bool say(const std::string& text) {
        return child.write(text, patienceSeconds * 1000) || fail("takes no more commands");
    }

    bool nextLine() {
        std::size_t end = heard.find('\n', lineBegin);
        while (end == std::string::npos) {
            heard.erase(0, lineBegin);
            lineBegin = 0;
            const std::size_t known = heard.size();
            if (known > mostLineSize || answerSize > mostAnswerSize) return fail("talks without end");
            if (!listen()) return false;
            answerSize += heard.size() - known;
            end = heard.find('\n', known);
        }
        line = std::string_view(heard).substr(lineBegin, end - lineBegin);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lineBegin = end + 1;
        return true;
    }

    // Waits in short turns, so that a stop takes effect soon.
    bool listen() {
        constexpr int turnMs = 100;
        const double began = steadySeconds();
        while (!commandStopped()) {
            const ChildProcess::Output output = child.readSome(heard, turnMs);
            if (output == ChildProcess::Output::some) return true;
            if (output == ChildProcess::Output::ended) return fail("has ended in the middle of an answer");
            if (steadySeconds() - began > patienceSeconds) return fail("gives no answer");
        }
        return false;
    }

    // Gives it some time to end by itself, which a search in progress or a large table may take. Its output
    // is read meanwhile, so that it does not wait for room in the pipe.
    void dismiss() {
        child.write("quit\n", 0);
        child.closeInput();
        const double end = steadySeconds() + (commandStopped() ? 0.5 : 5);
        while (!child.hasEnded() && steadySeconds() < end) {
            heard.clear();
            if (child.readSome(heard, 5) == ChildProcess::Output::ended) sleepMilliseconds(5);
        }
    }

    ChildProcess child;
    i32 patienceSeconds;
    std::string faultText;
    std::string heard;
    std::size_t lineBegin = 0;  // in `heard`
    std::string_view line;      // of `heard`
    std::size_t answerSize = 0;
    std::optional<i32> lastScore;
};

// Engines end, or give no answer, on a text that is no position, without a legal move, or in a drawn game.
// Overwrites gamePosition.
bool canBeSearched(std::string_view fen) {
    const std::size_t side = fen.find(' ') + 1;
    if (side >= fen.size() || (fen[side] != 'w' && fen[side] != 'b')) return false;
    if (!readFen(fen) || gamePosition.state->fiftyMoves >= 100) return false;
    MoveList list;
    generateAllMoves(gamePosition, list);
    return countLegalMoves(gamePosition, list) > 0;
}

bool isBlackToMove(std::string_view fen) {
    return fen[fen.find(' ') + 1] == 'b';
}

// Returns at the end of the input or after a failure, which is reported.
void labelPositions(std::istream& input, OtherEngine& engine, i32 depth, std::ostream& output) {
    const KeptGame keptGame;
    i32 counter = 0;
    i32 skipped = 0;
    i32 withoutScore = 0;
    for (std::string line; !commandStopped() && readLine(input, line) && !line.empty();) {
        if (++counter % 1000 == 0) sendText(formatText("counter = %i\n", counter));
        if (!canBeSearched(line)) {
            ++skipped;
        } else if (!engine.search(line, depth)) {
            break;
        } else if (const std::optional<i32> score = engine.score(); !score) {
            ++withoutScore;
        } else {
            output << line << '\n'
                   << (isBlackToMove(line) ? -i64{*score} : i64{*score}) << '\n'
                   << std::flush;
            if (!output) break;
        }
    }
    if (skipped) sendText(formatText("skipped %i lines that cannot be searched\n", skipped));
    if (withoutScore) sendText(formatText("passed over %i positions without a score\n", withoutScore));
    if (input.bad()) sendText("Error: could not read input file!\n");
    if (!output) sendText("Error: could not write output file!\n");
}

}  // namespace

void callEngine(std::string_view text) {
    stopThinking();
    const Arguments arguments = readArguments(text);

    // Opened without erasing what an earlier run has written: that is done when the engine has started.
    std::ofstream output(arguments.output, std::ios::app);
    if (!output) throw Fault("Error: could not open output file!");
    std::ifstream input(arguments.input);
    std::error_code none;
    if (!input) throw Fault("Error: could not open input file!");
    if (std::filesystem::equivalent(arguments.input, arguments.output, none))
        throw Fault("Error: input and output are the same file!");
    const LongCommand longCommand;
    OtherEngine engine(arguments.patienceSeconds);
    if (engine.start(arguments.engine)) {
        std::filesystem::resize_file(arguments.output, 0, none);
        labelPositions(input, engine, arguments.depth, output);
    }
    if (!engine.fault().empty()) sendText("Error: the engine " + engine.fault() + "!\n");
}

}  // namespace valku
