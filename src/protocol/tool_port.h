#pragma once

#include <string_view>

namespace valku {

// The commands of the tools, which stand above the front-ends. Handed in at start-up; called with the text
// behind the command's word, on the thread that reads the commands.
struct ToolPort {
    void (*benchmark)(std::string_view arguments);
    void (*benchFromFile)(std::string_view arguments);
    void (*testEval)(std::string_view arguments);
    void (*gameStats)(std::string_view arguments);
    void (*checkMissEvals)(std::string_view arguments);
    void (*generateTestposEval)(std::string_view arguments);
    void (*callEngine)(std::string_view arguments);
    void (*learnFileToMatrix)(std::string_view arguments);
};

extern ToolPort toolPort;

}  // namespace valku
