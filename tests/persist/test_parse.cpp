#include "persist/hex_text.h"
#include "persist/parse.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

// One operation with its limits; it leaves what it read as text.
using Read = std::function<void(std::string& error, const char*& cursor, std::string& value)>;

template <class Number, class Operation>
Read number(Operation read, Number min, Number max) {
    return [=](auto& error, auto& cursor, auto& value) {
        Number got = 77;
        read(error, cursor, got, min, max);
        value = got == 77 ? "" : std::to_string(got);
    };
}

Read dec(int32_t min, int32_t max) {
    return number(PARSE_GetDec, min, max);
}

Read hex(uint32_t min, uint32_t max) {
    return number(PARSE_GetHex, min, max);
}

template <class Operation>
Read text(Operation read, size_t size) {
    return [=](auto& error, auto& cursor, auto& value) { read(error, cursor, value, size); };
}

void expectEquals(std::string& error, const char*& cursor, std::string&) {
    PARSE_Expect(error, cursor, '=');
}

} // namespace

TEST(Parse, ReadsWhatFitsAndLeavesTheCursorOnFailure) {
    struct Case {
        Read read;
        const char* text;
        const char* value;
        ptrdiff_t moved;
        const char* error;
    };
    const Case cases[] = {
        {dec(1, 5000), "  42 MHz", "42", 4, ""},
        {dec(0, 1), "7", "1", 1, ""},
        {dec(0, 1), "x", "", 0, "Expecting a number"},
        {dec(0, 9), "\t-", "0", 2, ""},
        {dec(0, 9), "+8;", "8", 2, ""},
        {dec(1, 9), "-3", "-3", 2, ""},
        {dec(1, 9), " -0", "", 1, "Expected a value >= 1"},
        {dec(0, 9), "-12", "-9", 3, ""},
        {dec(0, INT32_MAX), "4294967297", "1", 10, ""},
        {dec(0, INT32_MAX), "2147483648", "", 0, "Expected a value >= 0"},
        {dec(INT32_MIN, INT32_MAX), "-2147483648", "-2147483648", 11, ""},
        {hex(1, 0x100000), "0", "", 0, "Expected a value >= 1"},
        {hex(1, 0x100000), "FFFFFFFF", "1048576", 8, ""},
        {hex(0, 99), " 0x10", "0", 2, ""},
        {hex(0, 0xFFFF), "1aBg", "427", 3, ""},
        {hex(0, 9), "100000002", "2", 9, ""},
        {hex(0, 9), "-1", "", 0, "Expecting a number"},
        {text(PARSE_GetString, 255), " \"two\r\nlines\" x", "two\r\nlines", 13, ""},
        {text(PARSE_GetString, 3), "\"abc\"", "abc", 5, ""},
        {text(PARSE_GetString, 3), "\"abcd\"", "abc", 0, kParseStringError},
        {text(PARSE_GetString, 255), " \"open", "open", 1, kParseStringError},
        {text(PARSE_GetString, 255), "bare", "", 0, kParseStringError},
        {text(PARSE_GetWord, 10), " Flash1", "Flash", 6, ""},
        {text(PARSE_GetWord, 3), "Flash", "Fla", 3, ""},
        {text(PARSE_GetAlnum, 10), "\tA1b_", "A1b", 4, ""},
        {expectEquals, "=1", "", 1, ""},
        {expectEquals, "x", "", 0, "Expected '=', got 'x'"},
        {expectEquals, "", "", 0, "Expected '=', got '"},
    };
    for (const Case& c : cases) {
        std::string value;
        std::string error;
        const char* cursor = c.text;
        c.read(error, cursor, value);
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_EQ(cursor - c.text, c.moved) << c.text;
        EXPECT_EQ(error, c.error) << c.text;

        value.clear();
        error = "of the read before";
        cursor = c.text;
        c.read(error, cursor, value);
        EXPECT_EQ(value + error, "of the read before") << c.text;
        EXPECT_EQ(cursor, c.text);
    }
    EXPECT_EQ(PARSE_ErrorWords(kParseStringError), "Expected a text in double quotes");
}

TEST(Parse, SkipsALineWithTheBreaksBehindIt) {
    const std::pair<const char*, const char*> lines[] = {
        {"a\r\n\r\n\r\nb", "b"}, {"\n\r\nb\n", "b\n"}, {"\rb", "b"}, {"last", ""}, {"", ""}};
    for (const auto& [line, rest] : lines) {
        const char* cursor = line;
        PARSE_SkipLine(cursor);
        EXPECT_STREQ(cursor, rest) << line;
    }
}

TEST(HexText, ValuesAndBytes) {
    const std::pair<const char*, std::string> values[] = {{"", "0"},
                                                          {"1fA", "506"},
                                                          {"-10", "-16"},
                                                          {"-", "0"},
                                                          {"FFFFFFFF", "-1"},
                                                          {"-80000000", "-2147483648"},
                                                          {"123456789", "591751049"},
                                                          {"--1", "Not a hex value"},
                                                          {"1 ", "Not a hex value"}};
    for (const auto& [digits, expected] : values) {
        std::string error;
        const int32_t value = HEXTEXT_ToValue(digits, error);
        EXPECT_EQ(error.empty() ? std::to_string(value) : error, expected) << digits;
    }
    const std::pair<const char*, std::string> texts[] = {{"0a1B", "0A1B"},
                                                         {"0A1", "Odd length is illegal"},
                                                         {"010203", "HexString too long"},
                                                         {"0G", "Not a hex value"},
                                                         {"-1-F", "FFF1"}};
    for (const auto& [digits, expected] : texts) {
        std::string error;
        const std::string again = HEXTEXT_FromBytes(HEXTEXT_ToBytes(digits, 2, error));
        EXPECT_EQ(again + error, expected) << digits;
    }
}
