#include "device_world.h"
#include "support/hex_bytes.h"

#include <functional>
#include <gtest/gtest.h>

TEST(DeviceParser, NamesWhatIsWrongWithAStatement) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"Unknown identifier: ", {"# no comment", "; no comment", "  \t", "\t= 1"}},
        {"Unknown identifier: device", {"device = \"x\"", "Bank = 0, 1\rdevice"}},
        {"Expected '=', got 'V'", {"Vpp VCC", "Version  V"}},
        {"Expected '=', got '", {"Version"}},
        {"Expected ',', got 'x'", {"Bank = 0x1000, 100"}},
        {"Expected '-', got ','", {"VCC = 2700, 5500"}},
        {"Expected ',', got ' '",
         {"UARTRamcode = \"ram.s\" , \"TYPE_B\"", "IVector = 0 , \"Reset\", 16, FFFE",
          "IVector = 0, \"Reset\", 16 , FFFE", "PWArea = 10 , 7", "Ram = 10 , 7",
          "Relocate = 0, 1 , 2", "ProductInfo = 90, 4, 0 , \"00\""}},
        {"Expecting a number",
         {"Version = x", "Bank = 0, 100,", "Bank = 0, 100,\n200, 100", "aConstIDData = g"}},
        {"Expected a value >= 0", {"IDLenMin = -1"}},
        {"Expected a value >= 1",
         {"Version = 0", "FLASHPageLen = -1", "RAMCodeAdrLen = 0", "Bank = F000, 0"}},
        {"Expected a value >= 10", {"aHWRange = 10, 5"}},
        {"Expected a value >= 2000", {"VCC = 1999 - 5500", "VCC = 2700 - 1999"}},
        {"Unexpected identifier : Expecting VCC", {"Vpp = 1000", "Vpp = vcc", "Vpp ="}},
        {"SIFType: Unsupported interface", {"SIFType = sda79", "SIFType = \"SDA"}},
        {"AlgoS: Unsupported serial algorithm", {"AlgoS = S508"}},
        {"AlgoP: Unsupported parallel algorithm", {"AlgoP = \"P62\""}},
        {"IDCheckFunction: Unknown function defined",
         {"IDCheckFunction = \"CheckM7906\"", "IDCheckFunction = CheckM7907"}},
        {"UARTRamcode: Unsupported protocoll", {"UARTRamcode = \"ram.s\", \"TYPE_C\""}},
        {"\x01",
         {"UARTRamcode = \"ram.s\", TYPE_B", "IVector = 0, Reset, 16, FFFE",
          "ProductInfo = 90, 4, 0, 00", "Manufacturer = \"ACME", "Device = ACME"}},
        {"NUL byte in the text", {std::string("Bank = 0, 1\0,2", 14)}},
        // More than a record holds.
        {"Device: more than 255 characters", {"Device = \"" + std::string(256, 'x') + "\""}},
        {"UARTRamcode: more than 255 characters",
         {"UARTRamcode = \"" + std::string(256, 'x') + "\", \"TYPE_A\""}},
        {"ProductInfo: more than 99 characters",
         {"ProductInfo = 0, 0, 0, \"" + std::string(100, 'x') + "\""}},
        {"IVector: more than 99 characters",
         {"IVector = 0, \"" + std::string(100, 'x') + "\", 16, 0"}},
        {"Bank: more than 79 blocks", {"Bank = 100, 1" + repeat(", 100, 1", 78)}},
        {"aHWRange: more than 10 pairs", {"aHWRange = 1, 2" + repeat(", 1, 2", 10)}},
        {"aIDAdr: more than 20 addresses", {"aIDAdr = 1" + repeat(", 1", 20)}},
        {"aConstIDData: more than 20 bytes", {"aConstIDData = 1" + repeat(", 1", 20)}},
        {"IVector: more than 100 entries",
         {"IVector = 1, \"a\", 8, 1" + repeat(", 1, \"a\", 8, 1", 100)}},
    };
    const std::string head = kHead + "\r\n\n// note\n"; // blank lines do not count, comments do
    for (const auto& [error, statements] : cases) {
        for (const std::string& statement : statements) {
            const DeviceParseResult result = DEVICE_ParseText(head + statement);
            ASSERT_EQ(result.faults.size(), 1U) << statement;
            EXPECT_EQ(result.faults[0].text, error) << statement;
            EXPECT_EQ(result.faults[0].line, statement.find('\r') == std::string::npos ? 5 : 6);
            EXPECT_FALSE(result.record) << statement;
        }
    }
    EXPECT_EQ(faultTexts(DEVICE_ParseText("\n" + kHead)), "Line 1: Unknown identifier: \n");
}

TEST(DeviceParser, NamesTheFirstMissingParameter) {
    const std::string head = "Manufacturer = \"A\"\r";
    EXPECT_EQ(DEVICE_ParseText("").missing, "Device not specified");
    EXPECT_EQ(DEVICE_ParseText(head + "Device = \"\"").missing, "Device not specified");
    EXPECT_EQ(DEVICE_ParseText(head + "Device = \"D\"").missing, "Bank not specified");
}

// What would harm a chip or leave it erased is found before anything is sent.
TEST(DeviceParser, RefusesWhatDoesNotGoTogether) {
    const std::pair<const char*, const char*> cases[] = {
        {"FLASHPageLen = 96",
         "Line 4: a page of 96 bytes; a power of two up to 1024 would be right"},
        {"FLASHPageLen = 4096",
         "Line 4: a page of 2048 bytes; a power of two up to 1024 would be right"},
        {"FLASHPageLen = 128\nBank = 140, 80, 200, 90",
         "Line 5: the block at 140, 80 bytes, does not begin and end on pages of 80 bytes\n"
         "Line 5: the block at 200, 90 bytes, does not begin and end on pages of 80 bytes"},
        {"SprtEraseChip = 1\nUARTRamcode = \"a\", \"TYPE_B\"",
         "Line 6: TimeoutEraseAll is missing or 0, but SprtEraseChip needs a time in ms\n"
         "Line 6: TimeoutGetSUM is missing or 0, but UARTRamcode needs a time in ms"},
        {"SprtProtectBlock = 1\nTimeoutEraseBlock = 0",
         "Line 5: TimeoutEraseBlock is missing or 0, but SprtProtectBlock needs a time in ms"},
        {"FLASHIsEE = 1\nBank = 200, 100",
         "Line 5: a device that is filled as a whole has no gaps; the block at 200 would begin at "
         "100"},
        {"Relocate = 0,80,100", "Line 4: the window at 80, 100 bytes, holds a part of the block at "
                                "0; whole blocks would be right"},
    };
    for (const auto& [statements, faults] : cases) {
        const DeviceParseResult result = DEVICE_ParseText(kHead + statements);
        EXPECT_EQ(faultTexts(result), faults + std::string("\n"));
        EXPECT_FALSE(result.record);
    }
}

TEST(DeviceParser, ReadsNumbersAndCodes) {
    using R = DeviceRecord;
    const std::tuple<std::string, std::function<int64_t(const R&)>, int64_t> cases[] = {
        {"Version = 9999", [](const R& r) { return r.Writable; }, 1},
        {"IDLenMin=4\nIDLenMin\t=\t99 bytes", [](const R& r) { return r.IDLenMin; }, 15},
        {"IDLenAdr = 1fFfFfFfF", [](const R& r) { return r.IDLenAdr; }, 0xFFFFFFFF},
        {"Bank = 1000 ,200000", [](const R& r) { return r.aBlock[1].Len; }, 0x100000},
        {"VCC = 2700 - 5500", [](const R& r) { return r.VCCMin * 100 + r.VCCMax; }, 2755},
        {"Vpp = 5000\nVpp = nc", [](const R& r) { return r.Vpp; }, 0},
        {"SIFType = \"SDA79\"", [](const R& r) { return r.SIFType; }, 4},
        {"AlgoS = S507", [](const R& r) { return r.AlgoS; }, 0x87},
        {"PWArea = 1, 1FFFFFF", [](const R& r) { return r.PWAreaLen; }, 0xFFFFFF},
        {"TimeoutGetSUM = 999999", [](const R& r) { return r.TimeoutGetSUM; }, 200000},
        {"FLASHPageLen = 256", [](const R& r) { return r.FLASHPageLen; }, 256},
        {"UARTRamcode = \"a\",\"TYPE_B\"", [](const R& r) { return r.RamcodeType; }, 1},
        {"ProductInfo = 1FF,4,300,\"\"", [](const R& r) { return r.PICode + r.PIValue2; }, 510},
        {"aHWRange = 5 , 2000, 7, 7", [](const R& r) { return r.aHWRange[0].second; }, 1000},
        {"aConstIDData = 1, 1FF", [](const R& r) { return r.aConstIDData[1]; }, 0xFF},
    };
    for (const auto& [statement, field, value] : cases) {
        const DeviceParseResult result = DEVICE_ParseText(kHead + statement);
        ASSERT_TRUE(result.record) << statement << ": " << faultTexts(result);
        EXPECT_EQ(field(*result.record), value) << statement;
    }
}

TEST(DeviceParser, ReadsTextsAndListsUpToTheirLimits) {
    const std::string name(255, 'n');
    const DeviceParseResult result = DEVICE_ParseText(
        "Device = \"" + name + "\"\nManufacturer = \"two\nlines\"\n" + "Bank = 0, 1" +
        repeat(", 0, 1", 77) + "\nBank = 10000 , 8000\n" +
        "IVector = 0, \"Reset\", 16, FFFE, 1, \"NMI\" , 20, FFFC\naIDAdr = A ,b\naIDAdr = C\n" +
        std::string(3, '\0'));
    ASSERT_TRUE(result.record) << faultTexts(result);
    const DeviceRecord& record = *result.record;
    EXPECT_EQ(record.Manufacturer + record.Device, "two\nlines" + name);
    EXPECT_EQ(record.aBlock.at(78).Start + record.aBlock.at(78).Len, 0x18000U);
    EXPECT_EQ(record.aIVector.at(1).Name, "NMI");
    EXPECT_EQ(record.aIVector.at(1).Address, 0xFFFCU);
    EXPECT_EQ(record.aIDAdr, (std::vector<uint32_t>{0xA, 0xB, 0xC}));
}
