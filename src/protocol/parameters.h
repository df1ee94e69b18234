#pragma once

#include <string>
#include <string_view>

#include "chess/types.h"

// Everything that a user can set, in one table: a row has the key of settings.ini, the UCI option, or both.
// The rows stand in the order in which the file's keys are tested.

namespace valku {

enum class SettingCheck {
    any,
    positive,  // this and the next: other values leave what was there
    nonNegative,
    positiveOrNone,  // other values give 0
    nonZero,
    text,
    peer,  // host:port
};

struct Parameter {
    std::string_view key;  // without the "="; empty: the file does not know it
    SettingCheck check;
    i32* target;  // null: storeSetting and applyOption do the work
    void (*storeSetting)(std::string_view value);

    std::string_view option;       // empty: UCI does not know it
    int place;                     // in the list of options, from 1; 0: accepted, but not listed
    std::string_view declaration;  // what follows the option's name
    void (*applyOption)(Parameter& parameter, std::string_view value);

    bool needsIdleEngine = true;  // to set the option: a running search reads what it sets

    i32 standard = 0;  // the default of `target`, taken before anything is set
};

constexpr std::size_t longestPath = 255;  // of a file or a list of directories; a longer value is cut

// Notes the defaults. Once, before settings and options are read.
void initParameters();

// The option lines of the identification, in their order.
std::string optionDeclarations();

// Takes one line of settings.ini: every key that stands anywhere in it is tried.
void applySettingsLine(std::string_view line);

// False if setoption with that name touches nothing that a running search reads, as with an unknown name.
bool needsIdleEngine(std::string_view option);

// setoption. An unknown name does nothing. The engine must be idle if needsIdleEngine() says so.
void setOption(std::string_view name, std::string_view value);

// Values that have no other home. No rule reads the ones that are only stored.
struct StoredSettings {
    i32 maxExtensions = 12;
    i32 fewMovesExtValue1 = 100;
    i32 fewMovesExtValue2 = 100;
    i32 selectivity1 = 1;
    i32 selectivity2 = 1;
    i32 minDepthRemoteSearch = 8;
    i32 dummy2 = 100;
    i32 dummy3 = 100;
    i32 showCurrentMove = 0;
    i64 minNodesRemoteSearch = 6000000;
};

extern StoredSettings storedSettings;

}  // namespace valku
