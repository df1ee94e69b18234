#include "chess/board_text.h"

#include <string_view>

#include "chess/fen.h"

namespace valku {

std::string boardText(const Position& position) {
    const std::string fen = writeFen(position);
    const std::string_view placement = std::string_view(fen).substr(0, fen.find(' '));
    std::string text = "\n";
    for (const char c : placement) {
        if (c >= '1' && c <= '8') {
            for (int i = 0; i < c - '0'; ++i) text += " .";
        } else if (c == '/') {
            text += '\n';
        } else {
            text += ' ';
            text += c;
        }
    }
    text += position.sideToMove == White ? "\n-white to move\n" : "\n-black to move\n";
    text += "hashpos = " + std::to_string(position.state->hashLow);
    text += "  hashkey = " + std::to_string(position.state->hashHigh) + "\n";
    return text;
}

}  // namespace valku
