#include "platform/format.h"

#include <gtest/gtest.h>

TEST(Format, ShowsWhatWouldDoSomethingToATerminal) {
    using namespace std::string_literals;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"a\tb \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80", "=", "="},
        {"\x1B[2J\x07\x7F\0"s, "\\x1B[2J\\x07\\x7F\\x00", "="},
        {"\x9B"s + "31m", "\\x9B31m", "="},                          // C1 as one byte
        {"\xC2\x9B"s + "31m\xC2\xA0", "\\xC2\\x9B31m\xC2\xA0", "="}, // C1 in UTF-8
        {"\xC0\x9B \xE0\x82\x9B \xED\xA0\x80", "\\xC0\\x9B \\xE0\\x82\\x9B \\xED\\xA0\\x80", "="},
        {"\xF4\x90\x80\x80 \xE2\x82", "\\xF4\\x90\\x80\\x80 \\xE2\\x82", "="},
        {"a\nb\r\nc\rd", "a\nb\r\nc\\x0Dd", "a\\x0Ab\\x0D\\x0Ac\\x0Dd"},
    };
    for (const auto& [text, message, line] : cases) {
        const std::string expected = message == "=" ? text : message;
        EXPECT_EQ(formatPrintable(text, LineEnds::stay), expected);
        EXPECT_EQ(formatPrintable(text, LineEnds::shown), line == "=" ? expected : line);
    }
}
