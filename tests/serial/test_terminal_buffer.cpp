#include "serial/terminal_buffer.h"

#include <gtest/gtest.h>

namespace {

void receive(std::string_view bytes) {
    for (const char byte : bytes) {
        TERMINAL_ReceiveByte(static_cast<uint8_t>(byte));
    }
}

TEST(TerminalBuffer, TurnsBytesIntoText) {
    const std::pair<std::string, std::string> cases[] = {
        {"OK\r\n", "OK\r\n"}, {"a\nb", "a\r\nb"}, {std::string("a\0\rb", 4), "ab"},
        {"ab\bc", "ac"},      {"\b\bx", "x"},     {"\t\x1B\xFF", "\t\x1B\xFF"},
    };
    for (const auto& [bytes, text] : cases) {
        TERMINAL_Clear();
        receive(bytes);
        EXPECT_EQ(TERMINAL_GetText(), text);
    }
}

TEST(TerminalBuffer, DropsTheOldestLinesFirst) {
    TERMINAL_Clear();
    std::string line(98, 'x');
    for (int number = 0; number < 60; ++number) {
        line[0] = static_cast<char>('0' + number % 10);
        receive(line + "\n");
    }
    const std::string text = TERMINAL_GetText();
    EXPECT_EQ(text.size(), 4900U); // 50 lines would be more than two short of the capacity
    EXPECT_EQ(text.front(), '1');
    EXPECT_TRUE(text.ends_with(line + "\r\n"));
    // A full line without an end goes as a whole.
    TERMINAL_Clear();
    receive(std::string(kTerminalCapacity - 2, 'a'));
    EXPECT_EQ(TERMINAL_GetText().size(), kTerminalCapacity - 2);
    receive("b");
    EXPECT_EQ(TERMINAL_GetText(), "b");
}

TEST(TerminalBuffer, IsTakenOnceAChange) {
    std::string text;
    TERMINAL_Clear();
    EXPECT_TRUE(TERMINAL_TakeIfChanged(text));
    receive("a");
    EXPECT_TRUE(TERMINAL_TakeIfChanged(text));
    EXPECT_EQ(text, "a");
    receive(std::string("\0\r", 2));
    EXPECT_FALSE(TERMINAL_TakeIfChanged(text));
    receive("\b\b");
    EXPECT_TRUE(TERMINAL_TakeIfChanged(text));
    EXPECT_EQ(text, "");
}

} // namespace
