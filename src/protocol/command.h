#pragma once

#include <string_view>

namespace valku {

enum class Match { whole, prefix };

// Every word is open to the user of a root process; some are open to others, or at other times.
enum Audience : unsigned {
    caller = 1,           // the parent or peer that a process other than the root serves
    userWhileEditing = 2  // the user in the middle of setting up a board
};

// One row of a table of commands, which is searched from the top.
struct Command {
    std::string_view word;
    Match match;
    // `rest` is what follows the word on the line; for a whole match nothing. Called by the thread that reads
    // the commands. Throws Fault if the command fails; its text is sent.
    void (*handle)(std::string_view rest);
    unsigned openTo = 0;  // bits of Audience
};

// The arguments in the rest of a line: all after the one separator that ends the word.
constexpr std::string_view argumentsOf(std::string_view rest) {
    return rest.substr(rest.empty() ? 0 : 1);
}

}  // namespace valku
