#include "tools/engine_games.h"

#include <cstdlib>
#include <string>

#include "platform/text_scan.h"

namespace valku {

MoveComment commentOf(const PgnGame& game, i32 ply) {
    const std::string_view comment = game.plies[ply].comment;
    const std::size_t slash = comment.find('/');
    if (slash == std::string_view::npos) return {};
    const std::string value(comment.substr(0, slash));
    return {true, std::strtod(value.c_str(), nullptr), readNumber(comment.substr(slash + 1))};
}

Color engineColor(const PgnGame& game) {
    const auto holds = [&](std::string_view name) { return game.black.find(name) != std::string_view::npos; };
    return holds("Valku") || holds("valku") ? Black : White;
}

}  // namespace valku
