#include "distributed/wire_protocol.h"

#include <algorithm>
#include <limits>

#include "chess/move_text.h"
#include "chess/side.h"
#include "platform/text_scan.h"

namespace valku {

namespace {

constexpr std::string_view answerWord = "cabresult ";
constexpr std::size_t longestAnswer = 1023;

// The longest history that leaves the stack room for a search.
constexpr int mostHistory = 300;

constexpr i32 widestBound = 32000;

std::string squareList(const u8* list) {
    std::string text;
    for (; *list != noSquare; ++list) text += std::to_string(*list) + " ";
    return text;
}

template <Color Us>
std::string menOf(const Position& p) {
    return squareList(pawnsOf<Us>(p)) + ":" + squareList(knightsOf<Us>(p)) + ":" +
           squareList(bishopsOf<Us>(p)) + ":" + squareList(rooksOf<Us>(p)) + ":" +
           squareList(queensOf<Us>(p)) + ":" + std::to_string(kingOf<Us>(p)) + " ";
}

// A key half, as the signed number that the wire carries.
std::string keyText(u32 half) {
    return std::to_string(static_cast<i32>(half)) + " ";
}

std::string historyText(const Position& p) {
    const int reachable = std::min<int>(p.state->fiftyMoves, stackedMoves(p));
    std::string text;
    for (const StateRecord* record = p.state - reachable; record != p.state; ++record) {
        text += keyText(record->hashLow) + keyText(record->hashHigh);
    }
    return text;
}

template <class Number>
bool takeNumberAndBlank(std::string_view& text, Number& number) {
    const std::optional<Number> taken = takeNumber<Number>(text);
    number = taken.value_or(0);
    return taken && takeMark(text, ' ');
}

void readLine(std::string_view text, Line& line) {
    constexpr std::size_t moveWidth = 5;
    int count = 0;
    for (int from, to; count < maxLineMoves && textToSquares(text, from, to);) {
        line.moves[count++] = makeMoveWord(from, to);
        text.remove_prefix(std::min(moveWidth, text.size()));
    }
    line.moves[count] = nullMove;
}

// The next number of a text, after blanks; 0 if there is none, the largest if it does not fit.
i32 takeNumberOrZero(std::string_view& text) {
    skipSeparators(text);
    return takeNumber<i32>(text, std::numeric_limits<i32>::max()).value_or(0);
}

bool takeByte(std::string_view& text, u8& byte) {
    const i32 number = takeNumberOrZero(text);
    if (number < 0 || number > std::numeric_limits<u8>::max()) return false;
    byte = static_cast<u8>(number);
    return true;
}

void takeKey(std::string_view& text, StateRecord& record) {
    record.hashLow = static_cast<u32>(takeNumberOrZero(text));
    record.hashHigh = static_cast<u32>(takeNumberOrZero(text));
}

// The squares of one man, up to the colon or the letter after them. False if the text is no such group.
bool takeGroup(std::string_view& text, u8 man, Position& p) {
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        const i32 square = takeNumberOrZero(text);
        if (square < 0 || square > lastSquare || !onBoard(square)) return false;
        const bool isLastRank = rankOf(square) == 0 || rankOf(square) == 7;
        if ((man & pawnFlag) && isLastRank) return false;
        if (p.board[square] != empty || !placeMan(p, man, square)) return false;
        takeMark(text, ' ');
    }
    return true;
}

bool takeMen(std::string_view& text, Position& p) {
    constexpr u8 men[] = {WhitePawn, WhiteKnight, WhiteBishop, WhiteRook, WhiteQueen, WhiteKing,
                          BlackPawn, BlackKnight, BlackBishop, BlackRook, BlackQueen, BlackKing};
    for (const u8 man : men) {
        if (!takeGroup(text, man, p)) return false;
        if (man != BlackKing && !takeMark(text, ':')) return false;
    }
    return true;
}

}  // namespace

std::string composeJob(const Position& p, const SearchJob& job) {
    const StateRecord& state = *p.state;
    std::string text = "client_pos " + menOf<White>(p) + ":" + menOf<Black>(p);
    text += p.sideToMove == White ? "w\n" : "b\n";
    text += "client_castlings";
    for (const u8 square : state.castlings) text += " " + std::to_string(square);
    text += "\nclient_epfield " + std::to_string(state.epField);
    text += "\nclient_50moves " + std::to_string(state.fiftyMoves);
    text += "\nclient_hash " + keyText(state.hashLow) + std::to_string(static_cast<i32>(state.hashHigh));
    text += "\nclient_history " + historyText(p) + ";\n";
    text += "client_alphabeta " + std::to_string(job.ncount) + " " + std::to_string(job.alpha) + " " +
            std::to_string(job.beta) + " " + std::to_string(job.distance) + " " + (job.zws ? "1" : "0") +
            "\n";
    return text;
}

bool parseMen(std::string_view text, Position& p) {
    clearPosition(p);
    if (!takeMen(text, p) || !(text.starts_with('w') || text.starts_with('b'))) return false;
    p.sideToMove = text.starts_with('w') ? White : Black;
    computeDerived(p);
    return true;
}

bool parseCastlings(std::string_view text, Position& p) {
    return std::ranges::all_of(p.state->castlings, [&](u8& square) { return takeByte(text, square); });
}

bool parseEpField(std::string_view text, Position& p) {
    return takeByte(text, p.state->epField);
}

bool parseFiftyMoves(std::string_view text, Position& p) {
    return takeByte(text, p.state->fiftyMoves);
}

void parseKey(std::string_view text, Position& p) {
    takeKey(text, *p.state);
}

bool parseHistory(std::string_view text, Position& p) {
    const StateRecord current = *p.state;
    p.state = p.states;
    const auto isAtEnd = [&] {
        skipSeparators(text);
        return text.empty() || text.front() == ';';
    };
    for (int count = 0; count < mostHistory && !isAtEnd(); ++count) takeKey(text, *p.state++);
    *p.state = current;
    return isAtEnd();
}

SearchJob parseJobNumbers(std::string_view text) {
    takeNumberOrZero(text);
    SearchJob job;
    job.alpha = std::clamp(takeNumberOrZero(text), -widestBound, widestBound);
    job.beta = std::clamp(takeNumberOrZero(text), -widestBound, widestBound);
    job.distance = std::clamp(takeNumberOrZero(text), 0, deepestJob);
    job.zws = takeNumberOrZero(text) != 0;
    return job;
}

std::string composeResult(const SearchResult& result) {
    std::string text(answerWord);
    text += std::to_string(result.value) + " " + std::to_string(result.nodes) + " " +
            std::to_string(result.selDepth) + " " + std::to_string(result.tbProbes) + " " +
            std::to_string(result.tbHits) + " ";
    for (int i = 0; result.pv.moves[i]; ++i) text += (i ? " " : "") + moveToText(result.pv.moves[i]);
    return text + "\n";
}

std::optional<SearchResult> parseResult(std::string_view response) {
    if (!response.starts_with(answerWord) || response.size() > longestAnswer) return {};
    response.remove_prefix(answerWord.size());
    SearchResult result;
    if (!takeNumberAndBlank(response, result.value) || !takeNumberAndBlank(response, result.nodes) ||
        !takeNumberAndBlank(response, result.selDepth) || !takeNumberAndBlank(response, result.tbProbes) ||
        !takeNumberAndBlank(response, result.tbHits)) {
        return {};
    }
    // No search gives more than a mate, so this is no answer of one.
    if (result.value > mateScore || result.value < -mateScore) return {};
    readLine(response, result.pv);
    return result;
}

}  // namespace valku
