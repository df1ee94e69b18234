#include "distributed/wire_protocol.h"

#include <algorithm>

#include "chess/move_text.h"
#include "chess/side.h"
#include "platform/text_scan.h"

namespace valku {

namespace {

constexpr std::string_view answerWord = "cabresult ";
constexpr std::size_t longestAnswer = 1023;

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

bool isSquareText(std::string_view text) {
    return text.size() >= 2 && text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8';
}

int squareOf(std::string_view text) {
    return makeSquare(text[0] - 'a', text[1] - '1');
}

void readLine(std::string_view text, Line& line) {
    constexpr std::size_t moveWidth = 5;
    int count = 0;
    while (count < maxLineMoves && text.size() >= 4 && isSquareText(text) && isSquareText(text.substr(2))) {
        line.moves[count++] = makeMoveWord(squareOf(text), squareOf(text.substr(2)));
        text.remove_prefix(std::min(moveWidth, text.size()));
    }
    line.moves[count] = nullMove;
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
    // No search gives more than a mate; whoever says so cannot be counted on.
    if (result.value > mateScore || result.value < -mateScore) return {};
    readLine(response, result.pv);
    return result;
}

}  // namespace valku
