#include "data/hexdata.h"
#include "device/device_rows.h"
#include "device/ivector_rows.h"
#include "device_world.h"

#include <array>
#include <gtest/gtest.h>

namespace {

std::string viewText() {
    std::string text;
    for (const DeviceRow& row : DEVICEVIEW_MakeRows()) {
        text += row.name + "=" + row.value + "\n";
    }
    return text;
}

} // namespace

TEST(DeviceRows, ShowTheProperties) {
    const DeviceWorld world;
    EXPECT_EQ(viewText(), "Flash=0 - 0\n=\nWritable=No\n");
    DeviceWorld::select(kHead + "IDLenMin = 7\nIDLenMax = 7\naIDAdr = 10");
    EXPECT_NE(viewText().find("\nNum. of ID-bytes=7\nID-Adress=10\n=\n"), std::string::npos);
    DeviceWorld::select(
        "Device = \"VT\"\nManufacturer = \"Acme\"\nRam = 80, 400\n"
        "Bank = 0, 10000, 10000, 8000\nIDLenMin = 4\nIDLenMax = 7\nIDLenAdr = FFDB\n"
        "aIDAdr = FFDF, E0, E1\nIVector = 0, \"Reset\", 16, FFFE\n"
        "PWArea = FFD0, C\nRelocate = F000, 1F000, 1000");
    EXPECT_EQ(viewText(), "Device=VT\n=\nManufacturer=Acme\n=\nRAM=80 - 47F\n=\n"
                          "Flash=0 - 17FFF\nBlock 0=0 - FFFF\nBlock 1=10000 - 17FFF\n=\n"
                          "Num. of ID-bytes=4 - 7\nID-length address=FFDB\n"
                          "ID-Adresses=1FFDF\n=E0\n=E1\n=\nReset=FFFE\n=\n"
                          "Password area=1FFD0 - 1FFDB\n=\nWritable=Yes\n");
}

TEST(IVectorRows, ShowWhatTheDataHolds) {
    const DeviceWorld world;
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"1, \"Reset\", 16, FFFE", "8000", false},
        {"1, \"RESET_Vector\", 16, FFF0", "7FFF", true},
        {"1, \"NMI\", 16, FFF0", "7FFF", false},
        {"1, \"Reset\", 16, FFF1", "--", false}, // its second byte is not loaded
        {"1, \"Reset\", 20, FFF4", "3FFFF", false},
        {"1, \"reset\", 20, FFF8", "40000", true}, // one byte behind the last block
        {"1, \"Data\", 8, FFFD", "FF", false},
        {"1, \"Data\", 32, FFFC", "8000FFFF", false},
        {"1, \"None\", 0, 0", "0", false},
    };
    HEXDATA_Reset();
    HEXDATA_AddData(0xFFF0, std::array<uint8_t, 2>{0xFF, 0x7F});
    const uint8_t more[] = {0xFF, 0xFF, 0xF3, 0xEE, 0, 0, 4, 0, 0xFF, 0xFF, 0, 0x80};
    HEXDATA_AddData(0xFFF4, more);
    for (const auto& [vector, contents, outside] : cases) {
        DeviceWorld::select(
            "Device = \"VT\"\nManufacturer = \"Acme\"\nBank = 8000, 8000, 30000, 10000\n"
            "IVector = " +
            vector);
        const std::vector<IVectorRow> rows = IVECT_MakeRows();
        ASSERT_EQ(rows.size(), 1U);
        EXPECT_EQ(rows[0].contents, contents) << vector;
        EXPECT_EQ(rows[0].number + rows[0].name, "1" + vector.substr(4, vector.find('"', 4) - 4));
        EXPECT_EQ(rows[0].resetOutsideFlash, outside) << vector;
    }
    HEXDATA_Reset();
}
