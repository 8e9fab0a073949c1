#include "device_world.h"
#include "platform/format.h"

#include <gtest/gtest.h>

namespace {

std::string described(const std::string& name) {
    return "Device = \"" + name + "\"\nManufacturer = \"Acme\"\nBank = 0, 100";
}

std::string blocks(const std::vector<DeviceBlock>& list) {
    std::string text;
    for (const DeviceBlock& block : list) {
        text += formatText("%d: %X-%llX ", block.index, block.range.start,
                           static_cast<unsigned long long>(block.range.end));
    }
    return text;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(DeviceInit, LeavesOutWhatCannotBeUsed) {
    DeviceWorld world;
    const std::string folder = world.deviceFolder();
    world.addFile("readme.txt", "no description");
    EXPECT_EQ(DEVICE_Init(), 1);
    world.addFile("2.dev", described("B") + "\nBad = 1\n");
    EXPECT_EQ(DEVICE_Init(), 1);
    const std::string none = "Can not find device file in directory " + folder;
    EXPECT_EQ(world.reports,
              (Texts{none, none + " (Device::_ParseDeviceFile: Error reading device file " +
                               folder + "2.dev, Line 4: Unknown identifier: Bad)"}));
    world.addFile("1.dev", described("A"));
    world.addFile("3.dev", described("C"));
    world.addFile("4.dev", "Device = \"A\"");
    std::filesystem::create_directory(folder + "5.dev");
    world.log.clear();
    RUN_Reset();
    EXPECT_EQ(DEVICE_Init(), 0);
    EXPECT_EQ(DEVICE_GetNumDevices(), 2);
    std::string note = "Device::_ParseDeviceFile: Error reading device file " + folder +
                       "2.dev, Line 4: Unknown identifier: Bad\nError reading device file " +
                       folder + "4.dev: Missing parameter: Manufacturer not specified\n" +
                       "Device::DEVICE_Init: Read file failed (" + folder +
                       "5.dev: Is a directory)";
    EXPECT_EQ(world.screen.questions, Texts{"Device descriptions that are left out: " + note});
    std::erase(note, '\n');
    EXPECT_EQ(world.log, note);
    EXPECT_EQ(RUN_GetExitCode(), 0);
    DEVICE_Clear();
    RUN_SetUnattended(true);
    // A file of the system that holds less than its size says.
    const std::filesystem::path shortFile = "/sys/kernel/uevent_seqnum";
    if (std::filesystem::exists(shortFile)) {
        std::filesystem::create_symlink(shortFile, folder + "6.dev");
    }
    EXPECT_EQ(DEVICE_Init(), 0);
    EXPECT_EQ(world.screen.questions.size(), 1U);
    EXPECT_EQ(std::filesystem::exists(shortFile), world.log.ends_with(" of 4096 bytes)"))
        << world.log;
}

TEST(Device, TableHoldsTwoHundred) {
    const DeviceWorld world;
    for (int i = 0; i < 201; ++i) {
        EXPECT_EQ(_ParseDeviceFile(described("D"), ""), 0);
    }
    EXPECT_EQ(world.reports, Texts{"Device::_AddDevice: Too many devices"});
    EXPECT_EQ(DEVICE_GetNumDevices(), 200);
}

TEST(Device, IsFoundByItsExactName) {
    DeviceWorld world;
    for (const char* name : {"A", "B", "B"}) {
        DeviceWorld::select(described(name));
    }
    EXPECT_EQ(DEVICE_FindByName("B"), 0);
    EXPECT_EQ(DEVPROPS_GetDevice(), 1);
    EXPECT_EQ(DEVICE_FindByName("b"), 1);
    EXPECT_EQ(DEVPROPS_GetDevice(), 1) << "the selected one stays";
    EXPECT_EQ(world.reports, Texts{"The devicename 'b' was unknown.\n"
                                   "Please check your configuration!\n\n"});
    for (const char* name : {"VT-B256", "VT-B128", "VT-A96"}) {
        DeviceWorld::select(described(name));
    }
    EXPECT_EQ(DEVICE_UnknownHint("vt-b129").came, "VT-B128, VT-B256, VT-A96, B, B, A");
    for (int i = 0; i < 20; ++i) {
        DeviceWorld::select(described("FAR-AWAY"));
    }
    EXPECT_TRUE(DEVICE_UnknownHint("VT").came.ends_with("FAR-AWAY and 14 more"));
}

TEST(Device, CountsTheExtraDataAreaAsItsLastBlock) {
    const DeviceWorld world;
    DeviceWorld::select(described("A") + "\nBank = 100, 200, FFFFFF00, 100");
    EXPECT_EQ(blocks(DEVICE_Blocks()), "0: 0-100 1: 100-300 2: FFFFFF00-100000000 ");
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0xFFFFFFFFU);
    DevProps props;
    props.XDataStart = 0xF000;
    props.XDataLen = 0x100;
    props.aBlockSelect[1] = props.aBlockSelect[3] = 1;
    DEVPROPS_Set(props);
    EXPECT_EQ(blocks(DEVICE_SelectedBlocks()), "1: 100-300 3: F000-F100 ");
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0xF0FFU);
}

TEST(Device, TakesTheLastForASelectionBeyondTheTable) {
    const DeviceWorld world;
    DEVPROPS_SetDevice(7);
    EXPECT_EQ(blocks(DEVICE_Blocks()), ""); // no device at all
    EXPECT_EQ(DEVICE_GetFlashEnd(), 0U);
    DeviceWorld::select(described("A"));
    DeviceWorld::select(described("B") + "\nBank = 100, 200");
    for (const int nonsense : {2, 2147483647, -2147483647}) {
        DEVPROPS_SetDevice(nonsense);
        EXPECT_EQ(DEVICE_GetName(), "B");
        EXPECT_EQ(blocks(DEVICE_Blocks()), "0: 0-100 1: 100-300 ");
        EXPECT_EQ(DEVICE_SelectedIndex(), 1);
        EXPECT_EQ(DEVPROPS_GetDevice(), nonsense); // a query changes nothing
    }
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
