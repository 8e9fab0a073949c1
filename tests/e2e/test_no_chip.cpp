// Runs of the built program that need no chip: conversions, bad input, the arguments that are
// answered at once.

#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <gtest/gtest.h>

namespace {

constexpr char kHex[] = ":100000000102030405060708090A0B0C0D0E0F1068\r\n:00000001FF\r\n";

bool isInstalled(const std::string& tool) {
    return std::system(("command -v " + tool + " >/dev/null").c_str()) == 0;
}

void becomeNobody() {
    if (geteuid() == 0) {
        [[maybe_unused]] const int group = setgid(65534);
        [[maybe_unused]] const int user = setuid(65534);
    }
}

} // namespace

TEST(WithoutChip, AnswersHelpAndVersionWithoutTouchingAnything) {
    const ProgramFolder world;
    const struct {
        const char* argument;
        const char* start;
    } cases[] = {{"--help", "Usage: calvorin"},
                 {"-?", "Usage: calvorin"},
                 {"--version", "Calvorin V1.26c\n"}};
    for (const auto& c : cases) {
        const RunResult result = world.run({c.argument});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_TRUE(result.out.starts_with(c.start)) << result.out;
        EXPECT_EQ(result.err, "");
    }
    EXPECT_FALSE(std::filesystem::exists(world.folder / "calvorin.log"));
}

TEST(WithoutChip, SaysThatADesktopCannotBeHad) {
    const ProgramFolder world;
    const RunResult result = world.run({"app.hex"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("needs -Exit"), std::string::npos) << result.err;
}

TEST(WithoutChip, ReportsAnUnknownOptionInErrorLogAndExitCode) {
    const ProgramFolder world;
    const RunResult result = world.run({"-Nonsense", "-Exit"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, Strings{"\"Nonsense\" is not a valid command !"});
    EXPECT_NE(readFile(world.folder / "calvorin.err").find("\"Nonsense\" is not"),
              std::string::npos);
}

TEST(WithoutChip, ConvertsAndEditsWithoutAPort) {
    const ProgramFolder world;
    const Bytes bytes = randomBytes(0x2400, 1);
    writeFile(world.folder / "app.mot", srecords(0x1000, bytes));
    writeFile(world.folder / "boot.hex", kHex);
    const std::string out = world.folder / "out.hex";
    const RunResult result = world.run(
        {world.folder / "app.mot", "-EditRelocate-800", "-EditDeleteRangeA00-AFF",
         "-FileMerge" + (world.folder / "boot.hex").string(), "-FileSaveAs" + out, "-Exit"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.errors, Strings{});
    EXPECT_NE(result.err.find("Note: the port is not available, COM1 ("), std::string::npos);

    if (!isInstalled("srec_cat") || !isInstalled("objcopy")) {
        GTEST_SKIP() << "the peers srec_cat and objcopy are not installed";
    }
    Bytes expected(0x2C00, 0xFF);
    std::copy(bytes.begin(), bytes.end(), expected.begin() + 0x800);
    std::fill_n(expected.begin() + 0xA00, 0x100, 0xFF);
    for (int i = 0; i < 16; ++i) {
        expected[static_cast<size_t>(i)] = static_cast<uint8_t>(i + 1);
    }
    const std::string folder = world.folder.path().string() + "/";
    ASSERT_EQ(std::system(("cd " + folder +
                           " && srec_cat out.hex -intel -fill 0xFF 0 0x2C00 -o s.bin "
                           "-binary && objcopy -I ihex -O binary --gap-fill 0xFF out.hex o.bin")
                              .c_str()),
              0);
    const std::string image(expected.begin(), expected.end());
    EXPECT_EQ(readFile(world.folder / "s.bin"), image);
    EXPECT_EQ(readFile(world.folder / "o.bin"), image);
}

TEST(WithoutChip, NeedsThePortForATargetCommand) {
    const ProgramFolder world;
    const RunResult result = world.run({"-TargetGetCRC", "-Exit"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, (Strings{"SIO::_InitSIO: Port not available",
                                      "SIO::_StartComm: Could not open COM-Port"}));
    EXPECT_NE(result.err.find("No such file or directory"), std::string::npos) << result.err;
}

// Every bad file: one clear message, exit code 1, the old output stays.
TEST(WithoutChip, RefusesBadProgramFiles) {
    const ProgramFolder world;
    const std::string path = world.folder / "bad.hex";
    const std::string out = world.folder / "out.mot";
    writeFile(out, "old");
    const struct {
        std::string content;
        const char* error;
    } cases[] = {
        {"", "Can not identify file type"},
        {"hello", "Can not identify file type"},
        {std::string("\0\0", 2), "Can not identify file type"},
        {std::string(kHex) + " ", "Error in line 3: Unexpected character"},
        {":0000000", "Error in line 1: Expected Hex character : 0..9, A..F"},
        {std::string(":0000\0", 6), "Error in line 1: Expected Hex character : 0..9, A..F"},
        {":00000001FE", "Error in line 1: CheckSum error !"},
        {":" + std::string(8'000'000, '0'), "Error in line 1: Expected CR or LF"},
    };
    for (const auto& c : cases) {
        writeFile(path, c.content);
        const RunResult result = world.run({path, "-FileSaveAs" + out, "-Exit"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.errors, Strings{c.error}) << c.content.substr(0, 40);
        EXPECT_EQ(readFile(out), "old");
    }
    const RunResult missing = world.run({world.folder / "none.hex", "-Exit"});
    EXPECT_EQ(missing.errors.size(), 1U);
    const RunResult folder = world.run({world.folder.path(), "-Exit"});
    EXPECT_EQ(folder.errors, Strings{"OnFileOpen: Invalid file handle"});
}

TEST(WithoutChip, RefusesBadDevicesSettingsAndProjects) {
    {
        const ProgramFolder world;
        writeFile(world.folder / "Device" / "a.dev", "Device = \"X\"\nBanana = 3\n");
        const RunResult result = world.run({"-Exit"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.errors,
                  (Strings{"Unknown identifier: Banana",
                           "Device::_ParseDeviceFile: Error reading device file " +
                               (world.folder / "Device" / "a.dev").string() + ", Line 2"}));
    }
    {
        const ProgramFolder world;
        std::filesystem::remove_all(world.folder / "Device");
        const RunResult result = world.run({"-Exit"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.errors, Strings{"Can not find device file in directory " +
                                         (world.folder / "Device").string() + "/"});
    }
    {
        const ProgramFolder world;
        writeFile(world.folder / "calvorin.ini", "[Settings MAINFRAME]\r\nShowLog = x\r\n");
        const RunResult result = world.run({"-Exit"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.errors, Strings{"Expecting a number"});
    }
    {
        const ProgramFolder world;
        writeFile(world.folder / "Calvorin.tpu", "Port = 3\r\nPort = x\r\n");
        const RunResult result = world.run({"-Exit"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.err.find("Error reading project file: Expecting a number\n"),
                  std::string::npos)
            << result.err;
        EXPECT_EQ(readFile(world.folder / "Calvorin.tpu.bad"), "Port = 3\r\nPort = x\r\n");
        EXPECT_NE(readFile(world.folder / "Calvorin.tpu").find("Port = 3\r\n"), std::string::npos);
    }
}

TEST(WithoutChip, PrintsWhatItWouldHaveAsked) {
    const ProgramFolder world;
    const std::string path = world.folder / "bad.mot";
    writeFile(path, "S10510000102E7\r\nS1051002010200\r\nS10510040304DF\r\n");
    const RunResult result =
        world.run({path, "-FileSaveAs" + (world.folder / "out.mot").string(), "-Exit"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("Checksum error !: Continue and ignore ? (line 2) [not asked]\n"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(readFile(world.folder / "out.mot"),
              "S10510000102E7\r\nS10510040304DF\r\nS9030000FC\r\n");
}

TEST(WithoutChip, WorksInAFolderThatCannotBeWritten) {
    const ProgramFolder world;
    const TempFolder writable;
    std::filesystem::permissions(writable.path(), std::filesystem::perms::all);
    writeFile(world.folder / "a.hex", kHex);
    std::filesystem::permissions(world.folder.path(), std::filesystem::perms(0555));
    const std::string out = writable / "out.mot";
    Process process(world.command({world.folder / "a.hex", "-FileSaveAs" + out, "-Exit"}),
                    writable / "run", becomeNobody);
    EXPECT_EQ(process.wait(), 0) << process.err();
    EXPECT_EQ(ProgramFolder::lines(readFile(out)).size(), 2U);
    EXPECT_FALSE(std::filesystem::exists(world.folder / "calvorin.log"));
    std::filesystem::permissions(world.folder.path(), std::filesystem::perms(0755));
}

TEST(WithoutChip, KeepsTheOldFileWhenTheDiskIsFull) {
    const ProgramFolder world;
    const std::string in = world.folder / "a.mot";
    const std::string out = world.folder / "out.hex";
    writeFile(in, srecords(0, randomBytes(100'000, 1)));
    writeFile(out, "old");
    const RunResult result = world.run({in, "-FileSaveAs" + out, "-Exit"}, [] {
        const rlimit limit{20'000, 20'000}; // bytes: the file does not fit, the logs do
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    });
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, Strings{"Error writing file"});
    EXPECT_EQ(readFile(out), "old");
}
