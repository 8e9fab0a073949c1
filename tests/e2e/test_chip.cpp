// Runs of the built program against virtual chips on pseudo-terminals, in real time. The cases of a
// table run side by side, as many as two processors serve in the short waits of the boot ROM:
// nearly all of their time are longer waits that the protocol prescribes.

#include "device/device_parser.h"
#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <gtest/gtest.h>

namespace {

constexpr size_t kAtOnce = 5;

// Runs `check` for every case, several at a time.
template <class Case, class Check>
void forAll(const std::vector<Case>& cases, const Check& check) {
    for (size_t start = 0; start < cases.size(); start += kAtOnce) {
        std::vector<std::jthread> threads;
        for (size_t i = start; i < std::min(start + kAtOnce, cases.size()); ++i) {
            threads.emplace_back([&check, &one = cases[i]] { check(one); });
        }
    }
}

DeviceRecord deviceOf(const std::string& name) {
    const auto path = builtFolder() / "Device" / (name + ".dev");
    return DEVICE_ParseText(readFile(path)).record.value();
}

struct Data {
    uint32_t address;
    Bytes bytes;
};

// Data at both ends of the device's flash, the second one not a multiple of a page or a word.
std::vector<Data> dataFor(const DeviceRecord& device) {
    const FlashBlock& last = device.aBlock.back();
    return {{device.aBlock.front().Start + 5, randomBytes(1500, 1)},
            {last.Start + last.Len - 701, randomBytes(700, 2)}};
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
    const FlashBlock& last = device.aBlock.back();
    std::string flash(last.Start + last.Len - start, '\xFF');
    for (const Data& piece : data) {
        std::copy(piece.bytes.begin(), piece.bytes.end(), flash.begin() + piece.address - start);
    }
    return flash;
}

Strings onDevice(const std::string& device, const Strings& rest) {
    Strings arguments{"-OptionsTargetDevice" + device, "-OptionsSettingsReset1",
                      "-OptionsCOMBaudrate115200"};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    arguments.emplace_back("-Exit");
    return arguments;
}

// A program file, loaded from the command line's first argument.
Strings withFile(const ProgramFolder& world, const std::string& text, Strings arguments) {
    writeFile(world.folder / "app.mot", text);
    arguments.insert(arguments.begin(), world.folder / "app.mot");
    return arguments;
}

std::string hexRange(const DeviceRecord& device) {
    const FlashBlock& last = device.aBlock.back();
    char text[40];
    std::snprintf(text, sizeof text, "%X,%X", device.aBlock.front().Start,
                  last.Start + last.Len - 1);
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

TEST(Chip, SecondRunNeedsThePasswordOfAProgrammedChip) {
    const ProgramFolder world;
    VirtualTarget target(world.folder, "VT-B128", {"--password", "0102030405060708090A0B0C"});
    const Bytes bytes = randomBytes(200, 3);
    Strings program = withFile(world, srecords(0x100, bytes), onDevice("VT-B128", {"-TargetAuto"}));
    EXPECT_EQ(world.run(program).exitCode, 0);

    RunResult result = world.run(
        onDevice("VT-B128", {"-OptionsPWPassword0102030405060708090A0BFF", "-TargetGetCRC"}));
    EXPECT_EQ(result.errors, (Strings{"Password checksum failed",
                                      "Could not download RAM image. Please check password"}));
    EXPECT_EQ(result.exitCode, 1);

    result = world.run(
        onDevice("VT-B128", {"-OptionsPWPassword0102030405060708090A0B0C", "-TargetVerify",
                             "-TargetEraseBlocks", "-TargetCheckBlankBlocks"}));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(target.stop(), 0) << target.summary();
}

TEST(Chip, WorksOnTheSelectedBlocksOnly) {
    const ProgramFolder world;
    VirtualTarget target(world.folder, "VT-B256");
    const std::string selection = "-OptionsTargetSelBlocks0,0-4";
    const std::string two = "-OptionsTargetSelBlocks1,1,3";
    const std::vector<Data> data = {{0x4000, randomBytes(300, 4)}, {0x10000, randomBytes(300, 5)}};
    RunResult result = world.run(
        withFile(world, programOf(data), onDevice("VT-B256", {selection, two, "-TargetProgram"})));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    result = world.run(withFile(world, srecords(0, randomBytes(4, 6)),
                                onDevice("VT-B256", {selection, two, "-TargetProgram"})));
    EXPECT_EQ(result.errors, Strings{"File does not fits into selected blocks"});
    EXPECT_EQ(target.stop(), 0) << target.summary();
    EXPECT_TRUE(target.flash() == flashWith(deviceOf("VT-B256"), data));
}

// The messages of the other faults are tests/target's, in virtual time.
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
        EXPECT_EQ(result.exitCode, 1) << c.device << " " << c.fault << "\n" << result.err;
        EXPECT_EQ(result.errors, c.errors) << c.device << " " << c.fault << "\n" << result.err;
        EXPECT_TRUE(ProgramFolder::lines(result.err)
                        .back()
                        .starts_with(std::string("Failed: ") + c.device + ", stopped in " +
                                     (c.command + 1)))
            << result.err;
        EXPECT_EQ(result.err.find("successfully"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("finished\n", result.err.find("Error: ")), std::string::npos)
            << "what stands behind a failure does not run\n"
            << result.err;
    });
}

TEST(Chip, ThatDisappearsEndsTheRun) {
    const ProgramFolder world;
    const VirtualTarget target(world.folder, "VT-B128", {"--rate", "9600"});
    Process process(world.command(withFile(world, srecords(0, randomBytes(8000, 8)),
                                           onDevice("VT-B128", {"-TargetAuto"}))),
                    world.folder / "run");
    ASSERT_TRUE(waitFor([&] { return process.err().find("Programming 0x") != std::string::npos; }));
    target.kill();
    EXPECT_EQ(process.wait(), 1);
    EXPECT_NE(process.err().find("COM1 lost"), std::string::npos) << process.err();
    EXPECT_NE(process.err().find("Error: Timeout error (COM1 is "), std::string::npos);
    EXPECT_NE(process.err().find("Programming failed"), std::string::npos);
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
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(process.wait(), 1) << c.moment;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << c.moment;
        EXPECT_NE(process.err().find("Interrupted"), std::string::npos) << process.err();
        EXPECT_EQ(process.err().find("Verifying 0x"), std::string::npos) << process.err();
    });
}

TEST(Chip, PortInUseIsRefused) {
    const ProgramFolder world;
    const ProgramFolder second;
    const VirtualTarget target(world.folder, "VT-B128", {"--rate", "9600"});
    writeFile(second.folder / "calvorin.ini",
              "[Settings PORTS]\r\nCOM1 = \"" + (world.folder / "port").string() + "\"\r\n");
    Process first(world.command(onDevice("VT-B128", {"-TargetGetCRC"})), world.folder / "run");
    ASSERT_TRUE(waitFor([&] { return first.err().find("COM1 opened") != std::string::npos; }));
    const RunResult result = second.run(onDevice("VT-B128", {"-TargetGetCRC"}));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors.front(), "SIO::_InitSIO: Port not available (COM1 is " +
                                         (world.folder / "port").string() +
                                         ": in use by another program)");
    EXPECT_EQ(first.wait(), 0) << first.err();
}
