#include "data/data_find.h"
#include "data/data_rows.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

class DataRows : public ::testing::Test {
protected:
    void SetUp() override { HEXDATA_Reset(); }
    void TearDown() override { HEXDATA_Reset(); }
};

std::vector<std::string> listRow(size_t index) {
    HexListRow row;
    HEXLISTVIEW_MakeRow(HEXDATA_GetAreas(), index, row);
    return {row.number, row.address, row.length, row.gap, row.hex, row.characters};
}

std::vector<std::string> dumpLine(uint32_t line) {
    DumpLine texts{"left", "over", "texts"};
    HEXDUMPVIEW_MakeLine(HEXDUMPVIEW_GetRange(), line, texts);
    return {texts.address, texts.hex, texts.characters};
}

using Texts = std::vector<std::string>;

} // namespace

TEST_F(DataRows, ListShowsOneRowAnArea) {
    HEXDATA_AddData(0, Bytes(0x100, 0x20));
    HEXDATA_AddData(0x200, bytesOf("0123456789ABCDEF"));
    HEXDATA_AddData(0x1000300, Bytes{0x41, 0x42, 0x0A});
    HEXDATA_AddData(0xFFFFFFFE, Bytes{0x7F, 0x80});
    EXPECT_EQ(listRow(0)[3], "000100");
    EXPECT_EQ(listRow(1),
              (Texts{"0002", "00000200", "00000010", "10000F0",
                     "30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46", "0123456789ABCDEF"}));
    EXPECT_EQ(listRow(2), (Texts{"0003", "01000300", "00000003", "FEFFFCFB", "41 42 0A ", "AB."}));
    EXPECT_EQ(listRow(3), (Texts{"0004", "FFFFFFFE", "00000002", "", "7F 80 ", "\x7F."}));
}

TEST_F(DataRows, SummaryTellsRangeChecksumAndSize) {
    EXPECT_EQ(HEXLISTVIEW_MakeSummary().range, "0x000000-0x000000");
    HEXDATA_AddData(0x1234, Bytes{1, 2, 3});
    HEXDATA_AddData(0x1FFFFFF, Bytes{1});
    bool restart = true;
    HEXDATA_CalcSum(0x1234, 3, restart, 0xFF);
    HEXDATA_SetFits(true);
    const HexListSummary summary = HEXLISTVIEW_MakeSummary();
    EXPECT_EQ(summary.range, "0x001234-0x1FFFFFF");
    EXPECT_EQ(summary.checksum, "SUM: 0x0006");
    EXPECT_EQ(summary.bytes, "Number of bytes: 4");
    EXPECT_TRUE(summary.fits);
}

TEST_F(DataRows, DumpMarksWhatTheImageDoesNotHold) {
    EXPECT_EQ(HEXDUMPVIEW_NumLines(HEXDUMPVIEW_GetRange()), 1u);
    EXPECT_EQ(dumpLine(0)[1], "-- -- -- -- -- -- -- -- -- -- -- -- -- -- -- --");
    HEXDATA_AddData(0x1000, Bytes{0x20, 0x21, 0x7F, 0x80});
    HEXDATA_AddData(0x1010, Bytes{0x41, 0x0A});
    EXPECT_EQ(HEXDUMPVIEW_NumLines(HEXDUMPVIEW_GetRange()), 2u);
    EXPECT_EQ(dumpLine(0), (Texts{"00001000", "20 21 7F 80 -- -- -- -- -- -- -- -- -- -- -- --",
                                  ".!\x7F............."}));
    EXPECT_EQ(dumpLine(1), (Texts{"00001010", "41 0A -- -- -- -- -- -- -- -- -- -- -- -- -- --",
                                  "A..............."}));
}

TEST_F(DataRows, DumpLinesBeginAtTheFirstAddressAndReachTheLast) {
    struct Case {
        uint32_t first, last, lines;
        const char* firstAddress;
        const char* lastAddress;
    };
    const Case cases[] = {
        {0, 0, 1, "00000000", "00000000"},
        {0x1005, 0x1014, 1, "00001005", "00001005"},
        {0x1005, 0x1015, 2, "00001005", "00001015"},
        {0xFFFFFFFA, 0xFFFFFFFF, 1, "FFFFFFFA", "FFFFFFFA"},
        {0, 0xFFFFFFFF, 1u << 28, "00000000", "FFFFFFF0"},
        {1, 0xFFFFFFFF, 1u << 28, "00000001", "FFFFFFF1"},
    };
    for (const Case& c : cases) {
        HEXDATA_Reset();
        HEXDATA_AddData(c.first, Bytes{0xAB});
        if (c.last != c.first) {
            HEXDATA_AddData(c.last, Bytes{0xCD});
        }
        EXPECT_EQ(HEXDUMPVIEW_NumLines(HEXDUMPVIEW_GetRange()), c.lines);
        EXPECT_EQ(dumpLine(0)[0], c.firstAddress);
        const auto lastLine = dumpLine(c.lines - 1);
        EXPECT_EQ(lastLine[0], c.lastAddress);
        const size_t column = (c.last - c.first) % kBytesPerRow;
        EXPECT_EQ(lastLine[1].substr(column * 3, 2), c.last == c.first ? "AB" : "CD");
        // Nothing is taken from the start of the address space.
        EXPECT_EQ(lastLine[1].find_first_not_of("- ", column * 3 + 2), std::string::npos);
    }
}

TEST_F(DataRows, CopiesAsTheDumpShows) {
    HEXDATA_AddData(0x10, bytesOf("0123456789ABCDEFxy z"));
    EXPECT_EQ(HEXDUMPVIEW_CopyHex(0x11, 0x11), "31");
    EXPECT_EQ(HEXDUMPVIEW_CopyHex(0x1F, 0x2F),
              "46 78 79 20 7A -- -- -- -- -- -- -- -- -- -- --\n--");
    EXPECT_EQ(HEXDUMPVIEW_CopyCharacters(0x0F, 0x24), ".0123456789ABCDEFxy.z.");
    EXPECT_EQ(HEXDUMPVIEW_CopyHex(0, 0xFFFFFFFF).size(), size_t{kMaxCopiedBytes} * 3 - 1);
}

TEST_F(DataRows, FindStaysWithinAnArea) {
    HEXDATA_AddData(0x100, bytesOf("abcab"));
    HEXDATA_AddData(0x106, bytesOf("cabab"));
    HEXDATA_AddData(0xFFFFFFFD, bytesOf("xab"));
    const auto areas = HEXDATA_GetAreas();
    const auto next = [&areas](const char* pattern, uint32_t from) {
        return DATAFIND_Next(areas, bytesOf(pattern), from);
    };
    EXPECT_EQ(next("ab", 0), 0x100u);
    EXPECT_EQ(next("abc", 0x101), std::nullopt); // "ab" and "c" are a byte apart
    EXPECT_EQ(next("bab", 0x101), 0x108u);
    EXPECT_EQ(next("ab", 0x10A), 0xFFFFFFFEu);
    EXPECT_EQ(next("ab", 0xFFFFFFFF), std::nullopt);
    EXPECT_EQ(next("", 0), std::nullopt);
    EXPECT_EQ(DATAFIND_Previous(areas, bytesOf("ab"), uint64_t{1} << 32), 0xFFFFFFFEu);
    EXPECT_EQ(DATAFIND_Previous(areas, bytesOf("ab"), 0xFFFFFFFE), 0x109u);
    EXPECT_EQ(DATAFIND_Previous(areas, bytesOf("ab"), 0x100), std::nullopt);
}

// Against looking at every address, over pieces of more than one read.
TEST_F(DataRows, FindAgreesWithATrivialSearch) {
    std::mt19937 random(7);
    Bytes image(700'000);
    for (uint8_t& byte : image) {
        byte = static_cast<uint8_t>(random() % 3);
    }
    HEXDATA_AddData(0x8000, image);
    const auto areas = HEXDATA_GetAreas();
    for (int round = 0; round < 12; ++round) {
        const size_t at = random() % (image.size() - 12);
        const Bytes pattern(image.begin() + at, image.begin() + at + 12);
        const size_t from = random() % image.size();
        const auto expected =
            std::search(image.begin() + from, image.end(), pattern.begin(), pattern.end());
        const auto found = DATAFIND_Next(areas, pattern, static_cast<uint32_t>(0x8000 + from));
        ASSERT_EQ(found.has_value(), expected != image.end()) << "round " << round;
        if (found) {
            ASSERT_EQ(*found, 0x8000 + (expected - image.begin())) << "round " << round;
        }
        const auto last =
            std::find_end(image.begin(), image.begin() + at + 12, pattern.begin(), pattern.end());
        ASSERT_EQ(DATAFIND_Previous(areas, pattern, 0x8001 + at), 0x8000 + (last - image.begin()));
    }
}
