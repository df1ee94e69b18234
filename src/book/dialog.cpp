#include "book/dialog.h"

#include "platform/raw_io.h"
#include "platform/text_sink.h"

namespace valku {

// Moves on to the next character that is no blank, over as many lines as it takes. False at the end of the
// input.
bool Dialog::skipBlanks() {
    for (;;) {
        const std::size_t start = rest.find_first_not_of(" \t\r");
        if (start != std::string::npos) {
            rest.erase(0, start);
            return true;
        }
        if (!standardInput().readLine(rest)) return false;
    }
}

std::optional<char> Dialog::askCharacter(std::string_view question, std::string_view allowed,
                                         std::string_view complaint) {
    for (;;) {
        sendText(question);
        if (!skipBlanks()) return std::nullopt;
        const char answer = rest.front();
        rest.erase(0, 1);
        if (allowed.find(answer) != std::string_view::npos) return answer;
        sendText(complaint);
    }
}

std::optional<std::string> Dialog::askLine(std::string_view question) {
    sendText(question);
    if (!skipBlanks()) return std::nullopt;
    std::string line;
    line.swap(rest);
    return line;
}

}  // namespace valku
