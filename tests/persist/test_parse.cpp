#include "persist/hex_text.h"
#include "persist/parse.h"

#include <gtest/gtest.h>

namespace {

// What one read leaves behind: the value as text, how many characters it moved, the error text.
struct Outcome {
    std::string value;
    ptrdiff_t moved = 0;
    std::string error;
    bool operator==(const Outcome&) const = default;
};

template <class Read>
Outcome outcomeOf(const char* text, const Read& read) {
    Outcome outcome;
    const char* cursor = text;
    read(outcome.error, cursor, outcome.value);
    outcome.moved = cursor - text;
    return outcome;
}

} // namespace

TEST(Parse, NumbersKeepTheirBoundsAndLeaveTheCursorOnFailure) {
    struct Case {
        const char* text;
        int32_t min, max;
        Outcome expected;
    };
    const Case decimals[] = {
        {"  42 MHz", 1, 5000, {"42", 4, ""}},
        {"7", 0, 1, {"1", 1, ""}},
        {"x", 0, 1, {"none", 0, "Expecting a number"}},
        {"\t-", 0, 9, {"0", 2, ""}},
        {"+8;", 0, 9, {"8", 2, ""}},
        {"-3", 1, 9, {"-3", 2, ""}},
        {" -0", 1, 9, {"none", 1, "Expected a value >= 1"}},
        {"-12", 0, 9, {"-9", 3, ""}},
        {"4294967297", 0, INT32_MAX, {"1", 10, ""}},
        {"2147483648", 0, INT32_MAX, {"none", 0, "Expected a value >= 0"}},
        {"-2147483648", INT32_MIN, INT32_MAX, {"-2147483648", 11, ""}},
    };
    for (const Case& c : decimals) {
        const Outcome got = outcomeOf(c.text, [&c](auto& error, auto& cursor, auto& value) {
            int32_t number = 0;
            PARSE_GetDec(error, cursor, number, c.min, c.max);
            value = error.empty() ? std::to_string(number) : "none";
        });
        EXPECT_EQ(got, c.expected) << c.text << got.value << got.error;
    }
    const Case hexes[] = {
        {"0", 1, 0x100000, {"none", 0, "Expected a value >= 1"}},
        {"FFFFFFFF", 1, 0x100000, {"1048576", 8, ""}},
        {" 0x10", 0, 99, {"0", 2, ""}},
        {"1aBg", 0, 0xFFFF, {"427", 3, ""}},
        {"100000002", 0, 9, {"2", 9, ""}},
        {"-1", 0, 9, {"none", 0, "Expecting a number"}},
    };
    for (const Case& c : hexes) {
        const Outcome got = outcomeOf(c.text, [&c](auto& error, auto& cursor, auto& value) {
            uint32_t number = 0;
            PARSE_GetHex(error, cursor, number, uint32_t(c.min), uint32_t(c.max));
            value = error.empty() ? std::to_string(number) : "none";
        });
        EXPECT_EQ(got, c.expected) << c.text << got.value << got.error;
    }
}

TEST(Parse, StringsAndWords) {
    using Read = void (*)(std::string&, const char*&, std::string&, size_t);
    struct Case {
        Read read;
        const char* text;
        size_t size;
        Outcome expected;
    };
    const Case cases[] = {
        {PARSE_GetString, " \"two\r\nlines\" x", 255, {"two\r\nlines", 13, ""}},
        {PARSE_GetString, "\"abc\"", 3, {"abc", 5, ""}},
        {PARSE_GetString, "\"abcd\"", 3, {"abc", 0, kParseStringError}},
        {PARSE_GetString, " \"open", 255, {"open", 1, kParseStringError}},
        {PARSE_GetString, "bare", 255, {"", 0, kParseStringError}},
        {PARSE_GetWord, " Flash1", 10, {"Flash", 6, ""}},
        {PARSE_GetWord, "Flash", 3, {"Fla", 3, ""}},
        {PARSE_GetAlnum, "\tA1b_", 10, {"A1b", 4, ""}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(outcomeOf(c.text, [&](auto& error, auto& cursor,
                                        auto& value) { c.read(error, cursor, value, c.size); }),
                  c.expected)
            << c.text;
    }
}

TEST(Parse, ExpectAndSkip) {
    const auto expectEquals = [](auto& error, auto& cursor, auto&) {
        PARSE_Expect(error, cursor, '=');
    };
    EXPECT_EQ(outcomeOf("=1", expectEquals), (Outcome{"", 1, ""}));
    EXPECT_EQ(outcomeOf("x", expectEquals), (Outcome{"", 0, "Expected '=', got 'x'"}));
    EXPECT_EQ(outcomeOf("", expectEquals), (Outcome{"", 0, "Expected '=', got '"}));

    const std::pair<const char*, const char*> lines[] = {
        {"a\r\n\r\n\r\nb", "b"}, {"\n\r\nb\n", "b\n"}, {"\rb", "b"}, {"last", ""}, {"", ""}};
    for (const auto& [text, rest] : lines) {
        const char* cursor = text;
        PARSE_SkipLine(cursor);
        EXPECT_STREQ(cursor, rest) << text;
    }
}

TEST(Parse, NothingMovesAfterAFailure) {
    const char* const text = "=\"a\" word 12";
    const char* cursor = text;
    std::string error = "first";
    std::string string = "kept";
    int32_t decimal = 5;
    uint32_t hex = 6;
    PARSE_Expect(error, cursor, '=');
    PARSE_GetString(error, cursor, string, 9);
    PARSE_GetWord(error, cursor, string, 9);
    PARSE_GetAlnum(error, cursor, string, 9);
    PARSE_GetDec(error, cursor, decimal, 0, 9);
    PARSE_GetHex(error, cursor, hex, 0, 9);
    EXPECT_EQ(error + string + std::to_string(decimal) + std::to_string(hex), "firstkept56");
    EXPECT_EQ(cursor, text);
}

TEST(HexText, ValuesAndBytes) {
    struct Case {
        const char* text;
        int32_t value;
        const char* error;
    };
    const Case values[] = {{"", 0, ""},
                           {"1fA", 0x1FA, ""},
                           {"-10", -16, ""},
                           {"-", 0, ""},
                           {"FFFFFFFF", -1, ""},
                           {"-80000000", INT32_MIN, ""},
                           {"123456789", 0x23456789, ""},
                           {"--1", 0, "Not a hex value"},
                           {"1 ", 0, "Not a hex value"}};
    for (const Case& c : values) {
        std::string error;
        EXPECT_EQ(HEXTEXT_ToValue(c.text, error), c.value) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
    struct BytesCase {
        const char* text;
        const char* again; // the bytes as text
        const char* error;
    };
    const BytesCase texts[] = {{"0a1B", "0A1B", ""},
                               {"0A1", "", "Odd length is illegal"},
                               {"010203", "", "HexString too long"},
                               {"0G", "", "Not a hex value"},
                               {"-1-F", "FFF1", ""}};
    for (const BytesCase& c : texts) {
        std::string error;
        EXPECT_EQ(HEXTEXT_FromBytes(HEXTEXT_ToBytes(c.text, 2, error)), c.again) << c.text;
        EXPECT_EQ(error, c.error) << c.text;
    }
}
