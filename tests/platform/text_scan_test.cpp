#include "platform/text_scan.h"

#include <gtest/gtest.h>

namespace valku {
namespace {

TEST(TextScan, ReadsTheNumberAtTheStart) {
    const struct {
        const char* text;
        i64 number;
    } cases[] = {{"12", 12},
                 {" \t-7 rest", -7},
                 {"+5", 5},
                 {"3.9", 3},
                 {"", 0},
                 {"x12", 0},
                 {"-", 0},
                 {"4x", 4},
                 {"2147483647", 2147483647},
                 {"-2147483648", -2147483648LL},
                 {"12\r\n", 12}};
    for (const auto& c : cases) {
        EXPECT_EQ(readNumber(c.text), c.number) << c.text;
        EXPECT_EQ(readLongNumber(c.text), c.number) << c.text;
    }
    EXPECT_EQ(readNumber("2147483648"), 2147483647);
    EXPECT_EQ(readNumber("-99999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(readLongNumber("6000000000"), 6000000000);
    EXPECT_EQ(readLongNumber("99999999999999999999"), 9223372036854775807);
}

TEST(TextScan, WhatIsTakenIsRemoved) {
    std::string_view text = "  go 12x;-300 400,,last";
    EXPECT_EQ(takeWord(text), "go");
    EXPECT_EQ(takeNumber<i32>(text), std::nullopt);
    skipSeparators(text);
    EXPECT_EQ(takeNumber<i32>(text), 12);
    EXPECT_EQ(takeField(text, ';'), "x");
    EXPECT_EQ(takeNumber<u8>(text), std::nullopt);
    EXPECT_EQ(takeNumber<i8>(text, -1), -1);
    EXPECT_TRUE(takeMark(text, ' '));
    EXPECT_FALSE(takeMark(text, ' '));
    EXPECT_EQ(wholeNumber<i32>(text), std::nullopt);
    EXPECT_EQ(takeField(text, ','), "400");
    EXPECT_EQ(takeField(text, ','), "");
    EXPECT_EQ(takeField(text, ','), "last");
    EXPECT_EQ(takeWord(text), "");
    EXPECT_EQ(takeField(text), "");
    EXPECT_EQ(wholeNumber<i32>("-7"), -7);
}

}  // namespace
}  // namespace valku
