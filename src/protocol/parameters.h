#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chess/types.h"

// Everything that a user can set, in one table: a row has the key of settings.ini, the UCI option, or both.
// The rows stand in the order in which the file's keys are tested. docs/settings.md is printed from them.

namespace valku {

struct Parameter;

// Nothing sensible lies beyond this, and sums of as many weights as a board can hold stay far inside 32 bits.
constexpr i32 largestSetting = 100000;

// A key of settings.ini. A number goes to the row's variable if it is in the range; one above the range
// counts as the largest. All other keys have a function of their own.
struct Setting {
    std::string_view key;      // without the "="; empty: the file does not know it
    std::string_view meaning;  // one line for docs/settings.md
    i32 least = 0;             // a smaller number leaves what was there
    i32 most = largestSetting;
    bool smallerMeansLeast = false;             // instead
    std::string_view values = {};               // what a key with a function takes
    void (*store)(std::string_view) = nullptr;  // that function
    std::string (*current)() = nullptr;         // its value as text; null: it has no variable
};

enum class OptionType { spin, check, string, button };

// A UCI option. Its type and the typed default and bounds compose its declaration. As UCI has it the bounds
// bind the interface, not the engine: a value is taken as it is given.
struct Option {
    std::string_view name;  // empty: UCI does not know it
    int place = 0;          // in the identification, from 1; 0: accepted, but not declared
    OptionType type = OptionType::string;
    i32 standard = 0;  // of a spin; 0 or 1 of a check
    i32 least = 0;     // of a spin
    i32 most = 0;
    std::string_view standardText = {};                                     // of a string; may be empty
    void (*apply)(Parameter& parameter, std::string_view value) = nullptr;  // null: no effect
    std::string_view meaning = {};
    bool needsIdleEngine = true;  // a running search reads what it sets
};

struct Parameter {
    Setting setting;
    Option option;
    i32* target = nullptr;  // the variable of a number
    i32 standard = 0;       // the default: that of the variable, or the row's own if there is none
};

constexpr std::size_t longestPath = 255;  // of a file or a list of directories; a longer value is cut

// Notes the defaults. Once, before settings and options are read.
void initParameters();

std::span<const Parameter> allParameters();

// The options of the identification, in their order.
std::vector<const Option*> declaredOptions();

// The lines that declare them.
std::string optionDeclarations();

// Takes one line of settings.ini: every key that stands anywhere in it is tried.
void applySettingsLine(std::string_view line);

// False if setoption with that name touches nothing that a running search reads, as with an unknown name.
bool needsIdleEngine(std::string_view option);

// setoption. An unknown name does nothing. The engine must be idle if needsIdleEngine() says so.
void setOption(std::string_view name, std::string_view value);

}  // namespace valku
