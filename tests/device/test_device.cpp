#include "device_world.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

std::string described(const std::string& name) {
    return "Device = \"" + name + "\"\nManufacturer = \"Acme\"\nBank = 0, 100";
}

using Texts = std::vector<std::string>;

} // namespace

TEST(DeviceInit, ReportsAFolderWithoutDescriptions) {
    for (const bool folderExists : {false, true}) {
        DeviceWorld world;
        if (folderExists)
            world.addFile("readme.txt", "no description");
        EXPECT_EQ(DEVICE_Init(), 1);
        EXPECT_EQ(world.reports,
                  Texts{"Can not find device file in directory " + world.deviceFolder()});
        EXPECT_EQ(world.exitCode, 1);
        EXPECT_EQ(DEVICE_Selected().aBlock.size(), 0U);
        EXPECT_EQ(DEVICE_GetName() + DEVICE_GetNameAt(0), "");
    }
}

TEST(DeviceInit, StopsAtTheFirstRefusedFile) {
    DeviceWorld world;
    world.addFile("1.dev", described("A"));
    world.addFile("2.dev", described("B") + "\nBad = 1\n");
    world.addFile("3.dev", described("C"));
    EXPECT_EQ(DEVICE_Init(), 1);
    EXPECT_EQ(DEVICE_GetNumDevices(), 1);
    EXPECT_EQ(world.reports, (Texts{"Unknown identifier: Bad",
                                    "Device::_ParseDeviceFile: Error reading device file " +
                                        world.deviceFolder() + "2.dev, Line 4"}));

    world.reports.clear();
    world.exitCode = 0;
    world.addFile("0.dev", "Device = \"A\"");
    EXPECT_EQ(DEVICE_Init(), 1);
    EXPECT_EQ(world.reports, Texts{"Error reading device file " + world.deviceFolder() +
                                   "0.dev: Missing parameter: Manufacturer not specified"});
    EXPECT_EQ(world.exitCode, 0);
}

TEST(DeviceInit, SkipsAFileThatCannotBeRead) {
    DeviceWorld world;
    world.addFile("1.dev", described("A"));
    std::filesystem::create_directory(world.deviceFolder() + "0.dev");
    // A file of the system that holds less than its size says.
    const std::filesystem::path shortFile = "/sys/kernel/uevent_seqnum";
    const bool hasShortFile = std::filesystem::exists(shortFile);
    if (hasShortFile)
        std::filesystem::create_symlink(shortFile, world.deviceFolder() + "2.dev");
    EXPECT_EQ(DEVICE_Init(), 0);
    EXPECT_EQ(DEVICE_GetNumDevices(), 1);
    ASSERT_EQ(world.reports.size(), hasShortFile ? 2U : 1U);
    EXPECT_EQ(world.reports.front(), "Device::DEVICE_Init: Read file failed");
    if (hasShortFile) {
        EXPECT_EQ(world.reports.back(), "Device::DEVICE_Init: Error reading file");
    }
    EXPECT_EQ(world.exitCode, 1);
    EXPECT_NE(world.log.find(world.deviceFolder() + "0.dev: Is a directory"), std::string::npos);
}

TEST(DeviceInit, KeepsTwoHundredDevices) {
    DeviceWorld world;
    for (int i = 0; i < 201; ++i)
        world.addFile(std::to_string(i) + ".dev", described("D" + std::to_string(i)));
    EXPECT_EQ(DEVICE_Init(), 0);
    EXPECT_EQ(world.reports, Texts{"Device::_AddDevice: Too many devices"});
    EXPECT_EQ(DEVICE_GetNumDevices(), 200);
    EXPECT_EQ(DEVICE_GetNameAt(200), "");
}

TEST(Device, IsFoundByItsExactName) {
    DeviceWorld world;
    for (const char* name : {"A", "B", "B"})
        DeviceWorld::select(described(name));
    EXPECT_EQ(DEVICE_FindByName("B"), 0);
    EXPECT_EQ(DEVPROPS_GetDevice(), 1);
    EXPECT_EQ(DEVICE_FindByName(""), 1);
    EXPECT_EQ(DEVPROPS_GetDevice(), 0);
    EXPECT_TRUE(world.reports.empty());

    DEVPROPS_SetDevice(2);
    EXPECT_EQ(DEVICE_FindByName("b"), 1);
    EXPECT_EQ(DEVPROPS_GetDevice(), 0);
    EXPECT_EQ(world.reports, Texts{"The devicename 'b' was unknown.\n"
                                   "Please check your configuration!\n\n"});
}

TEST(Device, CountsTheExtraDataAreaAsItsLastBlock) {
    const DeviceWorld world;
    DeviceWorld::select(described("A") + "\nBank = 100, 200, 300, 10");
    EXPECT_EQ(DEVICE_GetNumBlocks(-1), 3);
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0x30FU);
    DevProps props;
    props.XDataStart = 0xF000;
    props.XDataLen = 0x100;
    DEVPROPS_Set(props);
    EXPECT_EQ(DEVICE_GetNumBlocks(-1), 4);
    const std::pair<int, std::pair<uint32_t, uint32_t>> blocks[] = {
        {0, {0, 0x100}}, {2, {0x300, 0x10}}, {3, {0xF000, 0x100}}, {-1, {0xF000, 0x100}}};
    for (const auto& [index, expected] : blocks) {
        std::pair<uint32_t, uint32_t> block;
        DEVICE_GetBlock(index, block.first, block.second, -1);
        EXPECT_EQ(block, expected) << index;
    }
    EXPECT_EQ(DEVICE_GetFlashStart(), 0U);
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0xF0FFU);
}

TEST(Device, CorrectsASelectionBeyondTheTable) {
    const DeviceWorld world;
    uint32_t start = 1;
    uint32_t len = 1;
    DEVPROPS_SetDevice(7);
    DEVICE_GetBlock(0, start, len, -1); // no device at all
    EXPECT_EQ(start + len, 0U);
    EXPECT_EQ(DEVPROPS_GetDevice(), 7);
    for (const char* name : {"A", "B", "C", "D"})
        DeviceWorld::select(described(name));
    DeviceWorld::select(described("E") + "\nBank = 100, 200\nIVector = 1, \"Reset\", 16, FE");
    for (const int nonsense : {5, 2147483647, -2147483647}) {
        DEVPROPS_SetDevice(nonsense);
        EXPECT_EQ(DEVICE_GetName(), "E");
        EXPECT_EQ(DEVICE_GetNumBlocks(-1), 2);
        DEVICE_GetBlock(1, start, len, -1);
        EXPECT_EQ(len, 0x200U);
        EXPECT_EQ(DEVPROPS_GetDevice(), 4);
    }
    EXPECT_EQ(DEVICE_GetNumBlocks(5), 1); // as device 0
    DEVPROPS_SetDevice(0);
    DEVICE_GetBlock(0, start, len, 7);
    EXPECT_EQ(DEVPROPS_GetDevice(), 4);

    int32_t number = 0;
    int32_t bits = 0;
    std::string name;
    for (const int index : {-1, 1})
        DEVICE_GetIVector(index, number, name, bits, start);
    EXPECT_EQ(name, "");
    DEVICE_GetIVector(0, number, name, bits, start);
    EXPECT_EQ(name, "Reset");
    EXPECT_EQ(start, 0xFEU);
    EXPECT_EQ(DEVICE_GetIDAdr(0), 0U);
}

TEST(Device, RelocatesTheAddressesOfItsRange) {
    const DeviceWorld world;
    struct Case {
        const char* range;
        uint32_t address;
        uint32_t expected;
    };
    const Case cases[] = {
        {"0, 10000, 8000", 0x7FFF, 0x17FFF},
        {"0, 10000, 8000", 0x8000, 0x8000},
        {"0, 10000, 0", 0, 0},
        {"100, 0, 10", 0xFF, 0xFF},
        {"100, 0, 10", 0x10F, 0xF},
        {"FFFFFF00, 0, 100", 0xFFFFFFFF, 0xFF},
    };
    for (const Case& c : cases) {
        DeviceWorld::select(described("A") + "\nRelocate = " + c.range);
        EXPECT_EQ(DEVICE_RelocateAddr(c.address), c.expected) << c.range;
    }
}
