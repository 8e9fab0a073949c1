#include "device/devprops_store.h"
#include "device_world.h"
#include "persist/ini.h"

#include <gtest/gtest.h>

TEST(DevProps, ComeBackFromTheSettingsFile) {
    DeviceWorld world;
    INI_Load();
    DEVPROPS_Load();
    EXPECT_EQ(DEVPROPS_Get(), DevProps{});

    DeviceWorld::select(kHead + "Bank = 100, 1, 200, 1, 300, 1, 400, 1");
    DevProps props{.Device = 0,
                   .Interface = 3,
                   .Speed = 8'000'000,
                   .XDataStart = -0x1000,
                   .XDataLen = 0,
                   .ResetByPC = 1,
                   .aBlockSelect = {1, 0, 1, 0, 1}};
    DEVPROPS_Set(props);
    DEVPROPS_Save();
    EXPECT_NE(readFile(world.folder / "tool.ini").find("DevProps.aBlockSelect[5] = 1, 0, 1, 0, 1"),
              std::string::npos);
    DEVPROPS_Set({});
    INI_Load();
    DEVPROPS_Load();
    EXPECT_EQ(DEVPROPS_Get(), props);
    EXPECT_EQ(DEVPROPS_GetXDataStart(), 0xFFFFF000U);
    EXPECT_TRUE(world.reports.empty());
}

TEST(DevProps, SelectOnlyBlocksThatHaveAFlag) {
    const DeviceWorld world;
    DeviceWorld::select(kHead + "Bank = 100, 1");
    DEVPROPS_SelectBlock(5, true);
    DEVPROPS_SelectAllBlocks();
    for (const int block : {-1, 200, 2147483647})
        DEVPROPS_SelectBlock(block, true);
    for (const auto& [block, selected] : {std::pair{-1, false},
                                          {0, true},
                                          {1, true},
                                          {2, false},
                                          {5, true},
                                          {199, false},
                                          {200, false}})
        EXPECT_EQ(DEVPROPS_IsBlockSelected(block), selected) << block;
    DEVPROPS_SelectBlock(0, false);
    EXPECT_FALSE(DEVPROPS_IsBlockSelected(0));
}
