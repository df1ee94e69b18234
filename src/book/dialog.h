#pragma once

#include <optional>
#include <string>
#include <string_view>

// Questions to the person at the console. The answers are read straight from standard input, past the chain
// of commands; several of them may stand in one line. Only for the thread that reads the commands.

namespace valku {

class Dialog {
  public:
    // Asks until the answer is one of the `allowed` characters; a wrong one is met with `complaint`. Nothing
    // at the end of the input.
    std::optional<char> askCharacter(std::string_view question, std::string_view allowed,
                                     std::string_view complaint);

    // Asks for a line: what is left of the one that is being read, unless it is blank, else the next.
    std::optional<std::string> askLine(std::string_view question);

  private:
    bool fill();

    std::string rest;
};

}  // namespace valku
