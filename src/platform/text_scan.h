#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include "platform/integers.h"

// Words and numbers at the start of a text. The functions named take... remove what they read from the text.

namespace valku {

constexpr bool isBlank(char character) {
    return character == ' ';
}

constexpr bool isWhiteSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

template <class Separator = bool(char)>
constexpr void skipSeparators(std::string_view& text, const Separator& isSeparator = isBlank) {
    const auto start = std::find_if_not(text.begin(), text.end(), isSeparator);
    text.remove_prefix(static_cast<std::size_t>(start - text.begin()));
}

// The next word; separators before it are removed too, those after it stay. Empty when there is none.
template <class Separator = bool(char)>
constexpr std::string_view takeWord(std::string_view& text, const Separator& isSeparator = isBlank) {
    skipSeparators(text, isSeparator);
    const auto end = std::find_if(text.begin(), text.end(), isSeparator);
    const std::string_view word = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(word.size());
    return word;
}

// The text up to the next mark, which is removed too, or all of it. Empty between two marks.
constexpr std::string_view takeField(std::string_view& text, char mark = ' ') {
    const std::string_view field = text.substr(0, text.find(mark));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    return field;
}

// Removes the mark if the text starts with it; false if it does not.
constexpr bool takeMark(std::string_view& text, char mark) {
    if (!text.starts_with(mark)) return false;
    text.remove_prefix(1);
    return true;
}

// A decimal number right at the start, with a minus sign if Number has one, but never with a plus sign.
// Nothing, with the text unchanged, if there is none. One that Number cannot hold is removed and counts as
// `outOfRange`.
template <class Number>
std::optional<Number> takeNumber(std::string_view& text, std::optional<Number> outOfRange = {}) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (error == std::errc::result_out_of_range) return outOfRange;
    return error == std::errc() ? std::optional(number) : std::nullopt;
}

// The number that the whole text is; nothing if it is anything else, or more than Number can hold.
template <class Number>
std::optional<Number> wholeNumber(std::string_view text) {
    const std::optional<Number> number = takeNumber<Number>(text);
    return text.empty() ? number : std::nullopt;
}

// The decimal number at the start of a text as a user writes it: blanks and tabs before it and a plus sign
// are passed over, and what follows it is ignored. 0 if there is none; the nearest i32 if it does not fit.
i32 readNumber(std::string_view text);

// The same in 64 bits.
i64 readLongNumber(std::string_view text);

}  // namespace valku
