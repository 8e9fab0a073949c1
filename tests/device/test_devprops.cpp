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
    const DevProps props{0, 3, 8'000'000, -0x1000, 0, 1, {1, 0, 1, 0, 1}};
    DEVPROPS_Set(props);
    DEVPROPS_Save();
    INI_Save();
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
    DEVPROPS_SelectBlock(199, true);
    DEVPROPS_SelectAllBlocks();
    std::string selected;
    for (const int block : {-1, 200, 2147483647}) {
        DEVPROPS_SelectBlock(block, true); // none of these
    }
    for (const int block : {-1, 0, 1, 2, 199, 200, 2147483647}) {
        selected += DEVPROPS_IsBlockSelected(block) ? '1' : '0';
    }
    EXPECT_EQ(selected, "0110100");
}
