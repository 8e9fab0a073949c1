// Runs of the built program against virtual chips on pseudo-terminals, in real time.
#include "device/device_parser.h"
#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <gtest/gtest.h>

namespace {

DeviceRecord deviceOf(const std::string& name) {
    const auto path = builtFolder() / "Device" / (name + ".dev");
    return DEVICE_ParseText(readFile(path)).record.value();
}

struct Data {
    uint32_t address;
    Bytes bytes;
};

// The end of the flash.
uint32_t endOf(const DeviceRecord& device) {
    return device.aBlock.back().Start + device.aBlock.back().Len;
}

// Data at both ends of the device's flash, the second one not a multiple of a page or a word.
std::vector<Data> dataFor(const DeviceRecord& device) {
    return {{device.aBlock.front().Start + 5, randomBytes(1500, 1)},
            {endOf(device) - 701, randomBytes(700, 2)}};
}

std::string programOf(const std::vector<Data>& data) {
    std::string text;
    for (const Data& piece : data) {
        text += srecords(piece.address, piece.bytes);
    }
    return text;
}

// What the flash holds afterwards, from the first block's start to the last one's end.
std::string flashWith(const DeviceRecord& device, const std::vector<Data>& data) {
    const uint32_t start = device.aBlock.front().Start;
    std::string flash(endOf(device) - start, '\xFF');
    for (const Data& piece : data) {
        std::copy(piece.bytes.begin(), piece.bytes.end(), flash.begin() + piece.address - start);
    }
    return flash;
}

std::string hexRange(const DeviceRecord& device) {
    char text[40];
    std::snprintf(text, sizeof text, "%X,%X", device.aBlock.front().Start, endOf(device) - 1);
    return text;
}

} // namespace

// Every command, one device a kind of loader and erase; all devices are tests/target's.
TEST(Chip, IsProgrammedVerifiedAndReadBack) {
    const std::vector<std::string> devices = {"VT-A60", "VT-AE16", "VT-B128", "VT-A32"};
    forAll(devices, [](const std::string& name) {
        const ProgramFolder world;
        VirtualTarget target(world.folder, name);
        const DeviceRecord device = deviceOf(name);
        const std::vector<Data> data = dataFor(device);
        const RunResult result = world.run(withFile(
            world, programOf(data),
            onDevice(name, {"-TargetCheckBlankChip", "-TargetAuto", "-TargetVerify",
                            "-TargetGetCRC", "-TargetCompare", "-TargetReadBack" + hexRange(device),
                            "-TargetVerify", "-TargetStartApplication",
                            "-FileSaveAs" + (world.folder / "back.mot").string()})));
        EXPECT_EQ(result.exitCode, 0) << name << "\n" << result.err;
        EXPECT_TRUE(ProgramFolder::lines(result.err)
                        .back()
                        .starts_with("Passed: " + name +
                                     ", TargetCheckBlankChip, TargetAuto, TargetVerify, "))
            << result.err;
        EXPECT_EQ(target.stop(), 0) << name << "\n" << target.summary();
        EXPECT_TRUE(target.flash() == flashWith(device, data)) << name;
    });
}

// A second run on a programmed chip goes by its password, and to the selected blocks alone.
TEST(Chip, GivesItsSelectedBlocksForItsPassword) {
    const ProgramFolder world;
    VirtualTarget target(world.folder, "VT-B128", {"--password", "0102030405060708090A0B0C"});
    const Bytes bytes = randomBytes(200, 3);
    const std::string both = srecords(0x100, bytes) + srecords(0x10000, bytes);
    EXPECT_EQ(world.run(withFile(world, both, onDevice("VT-B128", {"-TargetAuto"}))).exitCode, 0);
    const auto eraseWith = [&world](const std::string& last) {
        return world.run(
            onDevice("VT-B128", {"-OptionsPWPassword0102030405060708090A0B" + last,
                                 "-OptionsTargetSelBlocks0,0-3", "-OptionsTargetSelBlocks1,0-1",
                                 "-TargetEraseBlocks", "-TargetCheckBlankBlocks"}));
    };
    const RunResult wrong = eraseWith("FF");
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_EQ(wrong.errors, (Strings{"Password checksum failed",
                                     "Could not download RAM image. Please check password"}));
    EXPECT_EQ(eraseWith("0C").exitCode, 0);
    EXPECT_EQ(target.stop(), 0) << target.summary();
    EXPECT_TRUE(target.flash() == flashWith(deviceOf("VT-B128"), {{0x10000, bytes}}));
}

// The messages of other faults are tests/target's, in virtual time.
TEST(Chip, FailureEndsTheRunWithItsMessageAndExitCode1) {
    struct Case {
        const char* device;
        const char* fault;
        const char* command;
        Strings errors;
    };
    const std::vector<Case> cases = {
        {"VT-A32",
         "wrong-reply@ram",
         "-TargetGetCRC",
         {"Echoback RAM loader command failed",
          "Could not download RAM image. Please check password"}},
        {"VT-B128",
         "stuck-bits,address=104,value=FF",
         "-TargetVerify",
         {"Error comparing contents of address 100 Contents: FF (expected 5A, found FF; 128 of 128 "
          "bytes in this answer differ)"}},
    };
    forAll(cases, [](const Case& c) {
        const ProgramFolder world;
        VirtualTarget target(world.folder, c.device, {"--fault", c.fault});
        const uint32_t start = deviceOf(c.device).aBlock.front().Start;
        const RunResult result = world.run(
            withFile(world, srecords(start + 0x100, Bytes(300, 0x5A)),
                     onDevice(c.device, {"-OptionsPWFillFF1", c.command, "-TargetGetCRC"})));
        const std::string all = std::string(c.fault) + "\n" + result.err;
        EXPECT_EQ(result.exitCode, 1) << all;
        EXPECT_EQ(result.errors, c.errors) << all;
        EXPECT_TRUE(ProgramFolder::lines(result.err)
                        .back()
                        .starts_with(std::string("Failed: ") + c.device + ", stopped in " +
                                     (c.command + 1)))
            << all;
        EXPECT_EQ(result.err.find("finished\n", result.err.find("Error: ")), std::string::npos)
            << "what stands behind a failure does not run\n"
            << all;
    });
}

TEST(Chip, ASignalEndsTheRunAtAnyMoment) {
    struct Case {
        int signal;
        const char* moment; // what has been printed when it comes
    };
    const std::vector<Case> cases = {{SIGINT, "Communication started"},
                                     {SIGTERM, "Setting baudrate"},
                                     {SIGHUP, "Downloading RAM-Image started"},
                                     {SIGINT, "Connected with target"},
                                     {SIGINT, "Programming 0x"}};
    forAll(cases, [](const Case& c) {
        const ProgramFolder world;
        const VirtualTarget target(world.folder, "VT-B128", {"--rate", "9600"});
        Process process(
            world.command(withFile(world, srecords(0, randomBytes(8000, 8)),
                                   onDevice("VT-B128", {"-TargetProgram", "-TargetVerify"}))),
            world.folder / "run");
        ASSERT_TRUE(waitFor([&] { return process.err().find(c.moment) != std::string::npos; }))
            << c.moment << process.err();
        process.signal(c.signal);
        EXPECT_EQ(process.wait(), 1) << c.moment;
        EXPECT_NE(process.err().find("Interrupted"), std::string::npos) << process.err();
        EXPECT_EQ(process.err().find("Verifying 0x"), std::string::npos) << process.err();
    });
}
