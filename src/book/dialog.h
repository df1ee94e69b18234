#pragma once

#include <optional>
#include <string>
#include <string_view>

// Questions to the person at the console. The answers are read straight from standard input, before the
// dispatcher sees them; one line may hold several. Only for the thread that reads the commands.

namespace valku {

class Dialog {
  public:
    // Asks until the answer is one of the `allowed` characters; a wrong one is answered with `complaint`.
    // Nothing at the end of the input.
    std::optional<char> askCharacter(std::string_view question, std::string_view allowed,
                                     std::string_view complaint);

    // Asks for a line: the rest of the one that is being read, or the next if that rest is blank. Nothing at
    // the end of the input.
    std::optional<std::string> askLine(std::string_view question);

  private:
    bool skipBlanks();

    std::string rest;  // of the line that is being read
};

}  // namespace valku
