#include "device_world.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

std::string repeated(const std::string& first, const std::string& item, size_t count) {
    std::string text = first;
    for (size_t i = 0; i < count; ++i)
        text += item;
    return text;
}

const std::string kLongText(256, 'x');

} // namespace

TEST(DeviceParser, NamesWhatIsWrongWithAStatement) {
    struct Case {
        std::string statement;
        std::string error;
    };
    const Case cases[] = {
        {"Nonsense = 1", "Unknown identifier: Nonsense"},
        {"device = \"x\"", "Unknown identifier: device"},
        {"# no comment", "Unknown identifier: "},
        {"; no comment", "Unknown identifier: "},
        {"  \t", "Unknown identifier: "},
        {"Version 1", "Expected '=', got '1'"},
        {"Vpp VCC", "Expected '=', got 'V'"},
        {"Version", "Expected '=', got '"},
        {"Version = 0", "Expected a value >= 1"},
        {"Version = x", "Expecting a number"},
        {"IDLenMin = -1", "Expected a value >= 0"},
        {"FLASHPageLen = 0", "Expected a value >= 1"},
        {"RAMCodeAdrLen = 0", "Expected a value >= 1"},
        {"Bank = F000, 0", "Expected a value >= 1"},
        {"Bank = 0x1000, 100", "Expected ',', got 'x'"},
        {"Bank = 0, 100,", "Expecting a number"},
        {"Bank = 0, 100,\n200, 100", "Expecting a number"},
        {"aIDAdr = 1, 2,", "Expecting a number"},
        {"aConstIDData = g", "Expecting a number"},
        {"aHWRange = 10, 5", "Expected a value >= 10"},
        {"VCC = 1999 - 5500", "Expected a value >= 2000"},
        {"VCC = 2700, 5500", "Expected '-', got ','"},
        {"Vpp = 1000", "Unexpected identifier : Expecting VCC"},
        {"Vpp = vcc", "Unexpected identifier : Expecting VCC"},
        {"Vpp =", "Unexpected identifier : Expecting VCC"},
        {"SIFType = sda79", "SIFType: Unsupported interface"},
        {"SIFType = \"SDA", "SIFType: Unsupported interface"},
        {"AlgoS = S508", "AlgoS: Unsupported serial algorithm"},
        {"AlgoP = \"P62\"", "AlgoP: Unsupported parallel algorithm"},
        {"IDCheckFunction = \"CheckM7906\"", "IDCheckFunction: Unknown function defined"},
        {"IDCheckFunction = CheckM7907", "IDCheckFunction: Unknown function defined"},
        {"UARTRamcode = \"ram.s\", TYPE_B", "\x01"},
        {"UARTRamcode = \"ram.s\" , \"TYPE_B\"", "Expected ',', got ' '"},
        {"UARTRamcode = \"ram.s\", \"TYPE_C\"", "UARTRamcode: Unsupported protocoll"},
        {"IVector = 0 , \"Reset\", 16, FFFE", "Expected ',', got ' '"},
        {"IVector = 0, \"Reset\", 16 , FFFE", "Expected ',', got ' '"},
        {"IVector = 0, Reset, 16, FFFE", "\x01"},
        {"PWArea = 10 , 7", "Expected ',', got ' '"},
        {"Ram = 10 , 7", "Expected ',', got ' '"},
        {"Relocate = 0, 1 , 2", "Expected ',', got ' '"},
        {"ProductInfo = 90, 4, 0 , \"00\"", "Expected ',', got ' '"},
        {"ProductInfo = 90, 4, 0, 00", "\x01"},
        {"Manufacturer = \"ACME", "\x01"},
        {"Manufacturer = ACME", "\x01"},
        // More than a record holds.
        {"Manufacturer = \"" + kLongText + "\"", "Manufacturer: more than 255 characters"},
        {"Device = \"" + kLongText + "\"", "Device: more than 255 characters"},
        {"UARTRamcode = \"" + kLongText + "\", \"TYPE_A\"",
         "UARTRamcode: more than 255 characters"},
        {"IVector = 0, \"" + kLongText.substr(156) + "\", 16, 0",
         "IVector: more than 99 characters"},
        {"ProductInfo = 0, 0, 0, \"" + kLongText.substr(156) + "\"",
         "ProductInfo: more than 99 characters"},
        {repeated("Bank = 100, 1", ", 100, 1", 78), "Bank: more than 79 blocks"},
        {repeated("aHWRange = 1, 2", ", 1, 2", 10), "aHWRange: more than 10 pairs"},
        {repeated("aIDAdr = 1", ", 1", 20), "aIDAdr: more than 20 addresses"},
        {repeated("aConstIDData = 1", ", 1", 20), "aConstIDData: more than 20 bytes"},
        {repeated("IVector = 1, \"a\", 8, 1", ", 1, \"a\", 8, 1", 100),
         "IVector: more than 100 entries"},
        {std::string("Bank = 0, 1\0"
                     "00",
                     14),
         "NUL byte in the text"},
    };
    for (const Case& c : cases) {
        // Three statements, a blank line that does not count, a comment: the fault is in line 5.
        const DeviceParseResult result = DEVICE_ParseText(kHead + "\r\n\n// note\n" + c.statement);
        EXPECT_EQ(result.error, c.error) << c.statement;
        EXPECT_EQ(result.line, 5) << c.statement;
        EXPECT_FALSE(result.record) << c.statement;
    }
    EXPECT_EQ(DEVICE_ParseText("\n" + kHead).error, "Unknown identifier: ");
    EXPECT_EQ(DEVICE_ParseText(kHead + "Bad = 1\nWorse = 1").error, "Unknown identifier: Bad");
}

TEST(DeviceParser, NamesTheFirstMissingParameter) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "Device not specified"},
        {"// nothing\n", "Device not specified"},
        {"Device = \"\"\nManufacturer = \"A\"\nBank = 0, 1", "Device not specified"},
        {"Device = \"D\"\nBank = 0, 1", "Manufacturer not specified"},
        {"Device = \"D\"\rManufacturer = \"A\"", "Bank not specified"},
    };
    for (const auto& [text, missing] : cases) {
        const DeviceParseResult result = DEVICE_ParseText(text);
        EXPECT_EQ(result.error + result.missing, missing) << text;
        EXPECT_FALSE(result.record) << text;
    }
}

TEST(DeviceParser, ReadsNumbersAndCodes) {
    using R = DeviceRecord;
    struct Case {
        std::string statement;
        std::function<int64_t(const R&)> field;
        int64_t value;
    };
    const Case cases[] = {
        {"Version = 9999", [](const R& r) { return r.Writable; }, 1},
        {"// none", [](const R& r) { return r.RamcodeType; }, -1},
        {"   // text", [](const R& r) { return r.aBlock.size(); }, 1},
        {"Device/ text", [](const R& r) { return r.aBlock.size(); }, 1},
        {"IDLenMin = 4 bytes", [](const R& r) { return r.IDLenMin; }, 4},
        {"IDLenMin=4\nIDLenMin\t=\t99", [](const R& r) { return r.IDLenMin; }, 15},
        {"IDLenMax = 256", [](const R& r) { return r.IDLenMax; }, 255},
        {"IDLenAdr = fFfFfFfF", [](const R& r) { return r.IDLenAdr; }, 0xFFFFFFFF},
        {"Bank = 1000 ,200000", [](const R& r) { return r.aBlock[1].Len; }, 0x100000},
        {"VCC = 2700 - 5500", [](const R& r) { return r.VCCMin * 100 + r.VCCMax; }, 2755},
        {"Vpp = 20000", [](const R& r) { return r.Vpp; }, 125},
        {"Vpp = 5000\nVpp = nc", [](const R& r) { return r.Vpp; }, 0},
        {"Vpp = 5000\nVpp = VCC", [](const R& r) { return r.Vpp; }, 0},
        {"SIFType = SDA79", [](const R& r) { return r.SIFType; }, 4},
        {"SIFType = \"ST7\"", [](const R& r) { return r.SIFType; }, 6},
        {"AlgoS = S507", [](const R& r) { return r.AlgoS; }, 0x87},
        {"AlgoP = P62N", [](const R& r) { return r.AlgoP; }, 0x86},
        {"IDCheckFunction = CheckM7906", [](const R& r) { return r.idCheck(); }, 0},
        {"PWArea = 1, 1FFFFFF", [](const R& r) { return r.PWAreaLen; }, 0xFFFFFF},
        {"Ram = 80, 400", [](const R& r) { return r.RamLen; }, 0x400},
        {"TimeoutGetSUM = 999999", [](const R& r) { return r.TimeoutGetSUM; }, 200000},
        {"RAMCodeAdrLen = 9", [](const R& r) { return r.RAMCodeAdrLen; }, 3},
        {"FLASHPageLen = 4096", [](const R& r) { return r.FLASHPageLen; }, 2048},
        {"SprtCRC = 7", [](const R& r) { return r.SprtCRC; }, 1},
        {"TimerInit = 1", [](const R& r) { return r.TimerInit; }, 1},
        {"Relocate = 1, 2, 3",
         [](const R& r) { return r.RelocateFrom * 100 + r.RelocateTo * 10 + r.RelocateLen; }, 123},
        {"UARTRamcode = \"a.hex\", \"TYPE_A\"", [](const R& r) { return r.RamcodeType; }, 0},
        {"UARTRamcode = \"a.mot\",\"TYPE_B\"", [](const R& r) { return r.RamcodeType; }, 1},
        {"ProductInfo = 1FF, 4, 300, \"55AA\"",
         [](const R& r) { return r.PICode * 1000 + r.PIValue2; }, 255255},
        {"aHWRange = 5 , 2000, 7, 7", [](const R& r) { return r.aHWRange[0].second; }, 1000},
        {"aConstIDData = 1, 1FF", [](const R& r) { return r.aConstIDData[1]; }, 0xFF},
    };
    for (const Case& c : cases) {
        const DeviceParseResult result = DEVICE_ParseText(kHead + c.statement);
        ASSERT_TRUE(result.record) << c.statement << ": " << result.error;
        EXPECT_EQ(c.field(*result.record), c.value) << c.statement;
    }
}

TEST(DeviceParser, ReadsTextsAndListsUpToTheirLimits) {
    const std::string name(255, 'n');
    const DeviceParseResult result = DEVICE_ParseText(
        "Device = \"" + name + "\"\nManufacturer = \"two\nlines\"\n" +
        repeated("Bank = 0, 1", ", 0, 1", 77) + "\nBank = 10000 , 8000\n" +
        "IVector = 0, \"Reset\", 16, FFFE, 1, \"NMI\" , 20, FFFC\naIDAdr = A ,b\naIDAdr = C\n" +
        std::string(3, '\0'));
    ASSERT_TRUE(result.record) << result.error;
    const DeviceRecord& record = *result.record;
    EXPECT_EQ(record.Device, name);
    EXPECT_EQ(record.Manufacturer, "two\nlines");
    ASSERT_EQ(record.aBlock.size(), 79U);
    EXPECT_EQ(record.aBlock[78].Start, 0x10000U);
    EXPECT_EQ(record.aBlock[78].Len, 0x8000U);
    ASSERT_EQ(record.aIVector.size(), 2U);
    EXPECT_EQ(record.aIVector[1].Name, "NMI");
    EXPECT_EQ(record.aIVector[1].Bits, 20);
    EXPECT_EQ(record.aIVector[1].Address, 0xFFFCU);
    EXPECT_EQ(record.aIDAdr, (std::vector<uint32_t>{0xA, 0xB, 0xC}));
}
