#include "data/hexdata.h"
#include "device/device_rows.h"
#include "device/ivector_rows.h"
#include "device_world.h"

#include <algorithm>
#include <gtest/gtest.h>

TEST(DeviceRows, ShowEveryPropertyThatTheDeviceHas) {
    const DeviceWorld world;
    DeviceWorld::select(
        "Device = \"VT\"\nManufacturer = \"Acme\"\nRam = 80, 400\n"
        "Bank = 0, 10000, 10000, 8000\nIDLenMin = 4\nIDLenMax = 7\nIDLenAdr = FFDB\n"
        "aIDAdr = FFDF, E0, E1\nIVector = 0, \"Reset\", 16, FFFE\n"
        "PWArea = FFD0, C\nRelocate = F000, 1F000, 1000");
    const DeviceRow blank;
    const std::vector<DeviceRow> rows = {
        {"Device", "VT"},
        blank,
        {"Manufacturer", "Acme"},
        blank,
        {"RAM", "80 - 47F"},
        blank,
        {"Flash", "0 - 17FFF"},
        {"Block 0", "0 - FFFF"},
        {"Block 1", "10000 - 17FFF"},
        blank,
        {"Num. of ID-bytes", "4 - 7"},
        {"ID-length address", "FFDB"},
        {"ID-Adresses", "1FFDF"},
        {"", "E0"},
        {"", "E1"},
        blank,
        {"Reset", "FFFE"},
        blank,
        {"Password area", "1FFD0 - 1FFDB"},
        blank,
        {"Writable", "Yes"},
    };
    EXPECT_EQ(DEVICEVIEW_MakeRows(), rows);
}

TEST(DeviceRows, LeaveOutWhatIsNotThere) {
    const DeviceWorld world;
    EXPECT_EQ(DEVICEVIEW_MakeRows(),
              (std::vector<DeviceRow>{{"Flash", "0 - 0"}, {}, {"Writable", "No"}}));
    DeviceWorld::select(kHead + "IDLenMin = 7\nIDLenMax = 7\naIDAdr = 10");
    const std::vector<DeviceRow> rows = DEVICEVIEW_MakeRows();
    EXPECT_EQ(std::ranges::count(rows, DeviceRow{"Num. of ID-bytes", "7"}), 1);
    EXPECT_EQ(std::ranges::count(rows, DeviceRow{"ID-Adress", "10"}), 1);
}

TEST(IVectorRows, ShowWhatTheDataHolds) {
    const DeviceWorld world;
    struct Case {
        const char* vector;
        const char* contents;
        bool outside;
    };
    const Case cases[] = {
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
    const uint8_t bytes[] = {0xFF, 0x7F};
    HEXDATA_AddData(0xFFF0, bytes);
    const uint8_t more[] = {0xFF, 0xFF, 0xF3, 0xEE, 0, 0, 4, 0, 0xFF, 0xFF, 0, 0x80};
    HEXDATA_AddData(0xFFF4, more);
    for (const Case& c : cases) {
        DeviceWorld::select(
            "Device = \"VT\"\nManufacturer = \"Acme\"\nBank = 8000, 8000, 30000, 10000\n"
            "IVector = " +
            std::string(c.vector));
        const std::vector<IVectorRow> rows = IVECT_MakeRows();
        ASSERT_EQ(rows.size(), 1U);
        EXPECT_EQ(rows[0].contents, c.contents) << c.vector;
        EXPECT_EQ(rows[0].resetOutsideFlash, c.outside) << c.vector;
    }
    HEXDATA_Reset();
    DeviceWorld::select(kHead + "IVector = 12, \"Timer\", 16, fffa");
    const IVectorRow row = IVECT_MakeRows().at(0);
    EXPECT_EQ(row.number + "|" + row.name + "|" + row.bits + "|" + row.address + "|" + row.contents,
              "12|Timer|16|FFFA|--");
}
