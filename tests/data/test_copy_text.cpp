#include "data/copy_text.h"
#include "data/hexdata.h"

#include <gtest/gtest.h>

TEST(CopyText, MakesEachFormatOfARangeWithAGap) {
    HEXDATA_Reset();
    HEXDATA_AddData(0x1FFFE, std::vector<uint8_t>{0x30, 0x0A, 0x41});
    HEXDATA_AddData(0x20002, std::vector<uint8_t>{0x7E});
    const std::pair<CopyFormat, const char*> cases[] = {
        {CopyFormat::hex, "0A 41 -- 7E"},
        {CopyFormat::text, ".A.~"},
        {CopyFormat::cArray,
         "/* 0xFF also where the program holds nothing. */\n"
         "const uint8_t data_0001FFFF[4] = {\n    0x0A, 0x41, 0xFF, 0x7E,\n};\n"},
        {CopyFormat::intelHex, ":020000021FFFDE\n:02000F000A41A4\n:010012007E6F\n:00000001FF\n"},
    };
    for (const auto& [format, text] : cases) {
        EXPECT_EQ(COPYTEXT_Make(format, {0x1FFFF, 0x20003}), text);
    }
    EXPECT_EQ(COPYTEXT_Make(CopyFormat::cArray, {0x20002, 0x20003}),
              "const uint8_t data_00020002[1] = {\n    0x7E,\n};\n");
}

TEST(CopyText, ParsesHexAndSaysWhatIsNone) {
    const std::tuple<const char*, std::vector<uint8_t>, const char*> cases[] = {
        {"12aB 0xC3,0X0405,\r\n\tff\n", {0x12, 0xAB, 0xC3, 0x04, 0x05, 0xFF}, ""},
        {" ,\n", {}, ""},
        {"12 34\n56 -- 78", {}, "Line 2, column 4: \"-\" is no hex digit"},
        {":10", {}, "Line 1, column 1: \":\" is no hex digit"},
        {"\u00e9", {}, "Line 1, column 1: \"\u00e9\" is no hex digit"},
        {"00\n\u20ac0 \x1b", {}, "Line 2, column 1: \"\u20ac\" is no hex digit"},
        {"0\x1b", {}, "Line 1, column 2: \"\\x1B\" is no hex digit"},
        {"00 123", {}, "Line 1, column 4: a digit is without its pair"},
        {"0x", {}, "Line 1, column 3: there is no digit behind 0x"},
        {"0x 12", {}, "Line 1, column 3: there is no digit behind 0x"},
    };
    for (const auto& [text, bytes, fault] : cases) {
        const PastedHex parsed = COPYTEXT_Parse(text);
        EXPECT_EQ(parsed.bytes, bytes) << text;
        EXPECT_EQ(parsed.fault, fault);
    }
}
