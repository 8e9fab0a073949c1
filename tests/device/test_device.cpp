#include "device_world.h"
#include "platform/format.h"

#include <gtest/gtest.h>

namespace {

std::string described(const std::string& name) {
    return "Device = \"" + name + "\"\nManufacturer = \"Acme\"\nBank = 0, 100";
}

std::string block(int index, int device) {
    uint32_t start = 0;
    uint32_t len = 0;
    DEVICE_GetBlock(index, start, len, device);
    return formatText("%X+%X", start, len);
}

using Texts = std::vector<std::string>;

} // namespace

TEST(DeviceInit, StopsAtTheFirstRefusedFile) {
    DeviceWorld world;
    world.addFile("readme.txt", "no description");
    EXPECT_EQ(DEVICE_Init(), 1);
    world.addFile("1.dev", described("A"));
    world.addFile("2.dev", described("B") + "\nBad = 1\n");
    world.addFile("3.dev", described("C"));
    EXPECT_EQ(DEVICE_Init(), 1);
    EXPECT_EQ(DEVICE_GetNumDevices(), 1);
    EXPECT_EQ(world.reports, (Texts{"Can not find device file in directory " + world.deviceFolder(),
                                    "Unknown identifier: Bad",
                                    "Device::_ParseDeviceFile: Error reading device file " +
                                        world.deviceFolder() + "2.dev, Line 4"}));
    EXPECT_EQ(_ParseDeviceFile("Device = \"A\"", "0.dev"), 1);
    EXPECT_EQ(world.screen.questions, Texts{"Error reading device file 0.dev: Missing parameter: "
                                            "Manufacturer not specified"});
}

TEST(DeviceInit, SkipsAFileThatCannotBeRead) {
    DeviceWorld world;
    world.addFile("1.dev", described("A"));
    std::filesystem::create_directory(world.deviceFolder() + "0.dev");
    Texts reports = {"Device::DEVICE_Init: Read file failed"};
    // A file of the system that holds less than its size says.
    const std::filesystem::path shortFile = "/sys/kernel/uevent_seqnum";
    if (std::filesystem::exists(shortFile)) {
        std::filesystem::create_symlink(shortFile, world.deviceFolder() + "2.dev");
        reports.emplace_back("Device::DEVICE_Init: Error reading file");
    }
    EXPECT_EQ(DEVICE_Init(), 0);
    EXPECT_EQ(DEVICE_GetNumDevices(), 1);
    EXPECT_EQ(world.reports, reports);
    EXPECT_NE(world.log.find(world.deviceFolder() + "0.dev: Is a directory"), std::string::npos);
}

TEST(Device, TableHoldsTwoHundred) {
    const DeviceWorld world;
    for (int i = 0; i < 201; ++i)
        EXPECT_EQ(_ParseDeviceFile(described("D"), ""), 0);
    EXPECT_EQ(world.reports, Texts{"Device::_AddDevice: Too many devices"});
    EXPECT_EQ(DEVICE_GetNumDevices(), 200);
}

TEST(Device, IsFoundByItsExactName) {
    DeviceWorld world;
    for (const char* name : {"A", "B", "B"})
        DeviceWorld::select(described(name));
    EXPECT_EQ(DEVICE_FindByName("B"), 0);
    EXPECT_EQ(DEVPROPS_GetDevice(), 1);
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
    EXPECT_EQ(block(2, -1), "300+10");
    for (const int beyond : {3, 4, -1})
        EXPECT_EQ(block(beyond, -1), "F000+100");
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0xF0FFU);
}

TEST(Device, CorrectsASelectionBeyondTheTable) {
    const DeviceWorld world;
    DEVPROPS_SetDevice(7);
    EXPECT_EQ(block(0, -1), "0+0"); // no device at all
    EXPECT_EQ(DEVPROPS_GetDevice(), 7);
    DeviceWorld::select(described("A"));
    DeviceWorld::select(described("B") + "\nBank = 100, 200");
    for (const int nonsense : {2, 2147483647, -2147483647}) {
        DEVPROPS_SetDevice(nonsense);
        EXPECT_EQ(DEVICE_GetName(), "B");
        EXPECT_EQ(DEVICE_GetNumBlocks(-1), 2);
        EXPECT_EQ(block(1, -1), "100+200");
        EXPECT_EQ(DEVPROPS_GetDevice(), 1);
    }
    DEVPROPS_SetDevice(0);
    EXPECT_EQ(DEVICE_GetNumBlocks(7), 1); // as device 0
    EXPECT_EQ(block(1, 7), "100+200");    // as the last
    EXPECT_EQ(DEVPROPS_GetDevice(), 1);
}

TEST(Device, RelocatesTheAddressesOfItsRange) {
    const DeviceWorld world;
    DeviceWorld::select(described("A") + "\nRelocate = 0, 10000, 8000");
    EXPECT_EQ(DEVICE_RelocateAddr(0x7FFF), 0x17FFFU);
    EXPECT_EQ(DEVICE_RelocateAddr(0x8000), 0x8000U);
    DeviceWorld::select(described("A") + "\nRelocate = FFFFFF00, 0, 100");
    EXPECT_EQ(DEVICE_RelocateAddr(0xFFFFFEFF), 0xFFFFFEFFU);
    EXPECT_EQ(DEVICE_RelocateAddr(0xFFFFFFFF), 0xFFU);
    DeviceWorld::select(described("A") + "\nRelocate = 0, 10000, 0");
    EXPECT_EQ(DEVICE_RelocateAddr(0), 0U);
}
