#include "data/data_find.h"
#include "data/data_rows.h"
#include "support/seed.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

class DataRows : public ::testing::Test {
protected:
    void SetUp() override { HEXDATA_Reset(); }
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
    const std::tuple<AddressRange, uint32_t, const char*> cases[] = {
        {{0x1005, 0x1015}, 1, "00001005"},          {{0x1005, 0x1016}, 2, "00001015"},
        {{0xFFFFFFFA, 0x100000000}, 1, "FFFFFFFA"}, {{0, 0x100000000}, 1u << 28, "FFFFFFF0"},
        {{1, 0x100000000}, 1u << 28, "FFFFFFF1"},
    };
    HEXDATA_AddData(0, Bytes{0xAB});
    HEXDATA_AddData(0xFFFFFFFF, Bytes{0xCD});
    DumpLine texts;
    for (const auto& [range, lines, lastLine] : cases) {
        EXPECT_EQ(HEXDUMPVIEW_NumLines(range), lines);
        HEXDUMPVIEW_MakeLine(range, lines - 1, texts);
        EXPECT_EQ(texts.address, lastLine);
    }
    EXPECT_EQ(texts.hex, "-- -- -- -- -- -- -- -- -- -- -- -- -- -- CD --")
        << "nothing is taken from the start of the address space";
}

TEST_F(DataRows, CopiesAsTheDumpShows) {
    HEXDATA_AddData(0x10, bytesOf("0123456789ABCDEFxy z"));
    EXPECT_EQ(HEXDUMPVIEW_CopyHex({0x11, 0x12}), "31");
    EXPECT_EQ(HEXDUMPVIEW_CopyHex({0x1F, 0x30}),
              "46 78 79 20 7A -- -- -- -- -- -- -- -- -- -- --\n--");
    EXPECT_EQ(HEXDUMPVIEW_CopyCharacters({0x0F, 0x25}), ".0123456789ABCDEFxy.z.");
    EXPECT_EQ(HEXDUMPVIEW_CopyHex({0, 0x100000000}).size(), size_t{kMaxCopiedBytes} * 3 - 1);
}

// Against looking at every address, over many areas and over pieces of more than one read. The gaps
// hold a value here that no pattern has.
TEST_F(DataRows, FindAgreesWithATrivialSearch) {
    constexpr uint8_t kGap = 0xEE;
    TestRandom random;
    Bytes image(700'000);
    const auto base = static_cast<uint32_t>(0 - image.size()); // the last byte has the last address
    std::ranges::generate(image, [&] { return static_cast<uint8_t>(random() % 3); });
    HEXDATA_AddData(base, image);
    for (size_t at = 0; at < 30'000; at += 1 + random() % 9) {
        HEXDATA_DeleteRange(base + static_cast<uint32_t>(at), 1);
        image[at] = kGap;
    }
    const auto areas = HEXDATA_GetAreas();
    const auto begin = image.begin();
    for (int round = 0; round < 200; ++round) {
        const auto from =
            static_cast<ptrdiff_t>(random() % (round % 2 == 0 ? 30'000 : image.size()));
        Bytes pattern(1 + random() % 12);
        std::ranges::generate(pattern, [&] { return static_cast<uint8_t>(random() % 3); });
        const auto place = [&](auto found, auto none) {
            return found == none ? std::nullopt : std::optional(base + uint32_t(found - begin));
        };
        ASSERT_EQ(DATAFIND_Next(areas, pattern, base + uint32_t(from)),
                  place(std::search(begin + from, image.end(), pattern.begin(), pattern.end()),
                        image.end()));
        const auto before = std::min(from + std::ssize(pattern) - 1, std::ssize(image));
        ASSERT_EQ(DATAFIND_Previous(areas, pattern, base + uint64_t(from)),
                  place(std::find_end(begin, begin + before, pattern.begin(), pattern.end()),
                        begin + before));
    }
    EXPECT_EQ(DATAFIND_Next(areas, {}, 0), std::nullopt);
}
