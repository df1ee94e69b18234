#include "protocol/parameter_tables.h"

#include <cctype>
#include <initializer_list>
#include <limits>
#include <string_view>

#include "protocol/parameters.h"

namespace valku {

namespace {

std::string code(std::string_view text) {
    return "`" + std::string(text) + "`";
}

std::string row(std::initializer_list<std::string_view> cells) {
    std::string text = "|";
    for (const std::string_view cell : cells) text.append(" ").append(cell).append(" |");
    return text + "\n";
}

// A text default keeps its angle brackets only as code.
std::string defaultText(const std::string& value) {
    if (value.empty()) return "none";
    return std::isdigit(static_cast<unsigned char>(value.front())) ? value : code(value);
}

std::string defaultOf(const Parameter& parameter) {
    const Setting& setting = parameter.setting;
    return defaultText(setting.current ? setting.current() : std::to_string(parameter.standard));
}

std::string valuesOf(const Setting& setting) {
    using Limits = std::numeric_limits<i32>;
    if (!setting.values.empty()) return std::string(setting.values);
    if (setting.least == Limits::min()) return "any number";
    const std::string least = std::to_string(setting.least);
    return least + (setting.most == Limits::max() ? " or more" : " to " + std::to_string(setting.most));
}

std::string typeNameOf(const Option& option) {
    switch (option.type) {
        case OptionType::spin:
            return "spin, " + std::to_string(option.least) + " to " + std::to_string(option.most);
        case OptionType::check:
            return "check";
        case OptionType::string:
            return "string";
        default:
            return "button";
    }
}

std::string typeOf(const Option& option) {
    return typeNameOf(option) + (option.place > 0 ? "" : ", not declared");
}

std::string defaultOf(const Option& option) {
    switch (option.type) {
        case OptionType::spin:
            return std::to_string(option.standard);
        case OptionType::check:
            return option.standard ? "true" : "false";
        default:
            return defaultText(std::string(option.standardText));
    }
}

}  // namespace

std::string parameterTables() {
    std::string settings = row({"Key", "Default", "Values", "Meaning"}) + "|---|---|---|---|\n";
    for (const Parameter& parameter : allParameters()) {
        const Setting& setting = parameter.setting;
        if (!setting.key.empty())
            settings += row({code(setting.key), defaultOf(parameter), valuesOf(setting), setting.meaning});
    }
    std::string options = row({"UCI option", "Type", "Default", "Meaning"}) + "|---|---|---|---|\n";
    const auto addRow = [&](const Option& option) {
        options += row({code(option.name), typeOf(option), defaultOf(option), option.meaning});
    };
    for (const Option* option : declaredOptions()) addRow(*option);
    for (const Parameter& parameter : allParameters()) {
        if (!parameter.option.name.empty() && parameter.option.place == 0) addRow(parameter.option);
    }
    return settings + "\n" + options;
}

}  // namespace valku
