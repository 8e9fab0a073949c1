// Runs of the built program that need no chip: conversions, bad input, the arguments that are
// answered at once.

#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <regex>
#include <sys/stat.h>

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
    const char* const module = "calvorin-desktop.so";
    std::error_code notBuilt; // without it the answers are the same
    std::filesystem::copy_file(builtFolder() / module, world.folder / module, notBuilt);
    const auto noSuchDisplay = [] { setenv("DISPLAY", ":99", 1); };
    const struct {
        const char* argument;
        const char* part;
    } cases[] = {{"--help", "\n-OptionsCOMPort\t\t<PORT> Sets COM-port of PC\n"},
                 {"-?", "Usage: calvorin [FILE]"},
                 {"--version", "Calvorin V1.26c\n"},
                 {"--paths", "/calvorin.ini\ndefault project: "},
                 {"--list-devices", "\nVT-B128  "}};
    for (const auto& c : cases) {
        const RunResult result = world.run({c.argument}, noSuchDisplay);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_NE(result.out.find(c.part), std::string::npos) << result.out;
        EXPECT_EQ(result.err, "");
    }
    const RunResult noDesktop = world.run({"app.hex"}, noSuchDisplay);
    EXPECT_EQ(noDesktop.exitCode, 1);
    EXPECT_NE(noDesktop.err.find("needs -Exit"), std::string::npos) << noDesktop.err;
    EXPECT_FALSE(std::filesystem::exists(world.folder / "calvorin.log"));
}

TEST(WithoutChip, ReportsWhatItDoesNotUnderstand) {
    const ProgramFolder world;
    const std::string settings = readFile(world.folder / "calvorin.ini");
    writeFile(world.folder / "a.hex", kHex);
    const std::string out = world.folder / "out.mot";
    const RunResult result = world.run({world.folder / "a.hex", "-Nonsense", "-OptionsCOMPort2-3",
                                        "-FileSaveAs" + out, "-TargetGetCRC", "-Exit"});
    EXPECT_EQ(result.exitCode, 1);
    const Strings errors = {
        "\"Nonsense\" is not a valid command ! (argument \"-Nonsense\")",
        "\"-3\" behind the value is too much (argument \"-OptionsCOMPort2-3\")"};
    EXPECT_EQ(result.errors, errors);
    EXPECT_EQ(ProgramFolder::lines(result.err),
              (Strings{"Error: " + errors[0], "Error: " + errors[1],
                       "Failed: refused before anything was begun"}));
    EXPECT_NE(readFile(world.folder / "calvorin.err").find(errors[0]), std::string::npos);
    EXPECT_EQ(readFile(world.folder / "calvorin.ini"), settings);
    EXPECT_FALSE(std::filesystem::exists(world.folder / "Calvorin.tpu") ||
                 std::filesystem::exists(out));
    world.run({"-Nonsense", "-Exit"}, [] { close(STDERR_FILENO); });
    EXPECT_EQ(readFile(world.folder / "calvorin.log").find("\nError: "), std::string::npos)
        << "a file was taken for standard error";
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
    std::iota(expected.begin(), expected.begin() + 16, uint8_t{1});
    ASSERT_EQ(std::system(("cd " + world.folder.path().string() +
                           " && srec_cat out.hex -intel -fill 0xFF 0 0x2C00 -o s.bin "
                           "-binary && objcopy -I ihex -O binary --gap-fill 0xFF out.hex o.bin")
                              .c_str()),
              0);
    const std::string image(expected.begin(), expected.end());
    EXPECT_EQ(readFile(world.folder / "s.bin"), image);
    EXPECT_EQ(readFile(world.folder / "o.bin"), image);
}

// Each bad file: one clear message, exit code 1, the old output and the bad file stay.
TEST(WithoutChip, RefusesBadFiles) {
    const struct {
        const char* file;
        std::string content; // "": the file is removed, "/": a folder in its place, ">": 2 GiB of
                             // it and of a device
        const char* errors;
    } cases[] = {
        {"app.hex", std::string(kHex) + " ", "Error in line 3: Unexpected character\n"},
        {"app.hex", "", "File not found (app.hex: No such file or directory)\n"},
        {"app.hex", "/", "OnFileOpen: Invalid file handle (app.hex: Is a directory)\n"},
        {"Device", "", "Can not find device file in directory ./Device/\n"},
        {"calvorin.ini", "[Settings MAINFRAME]\r\nRect = 1, 2\r\n", "Expected ',', got '\\x0D'\n"},
        {"Calvorin.tpu", "Port = 1\r\nPort = x\r\n",
         "The default project cannot be read to its end (./Calvorin.tpu)\n"},
        {"Calvorin.tpu", ">", "Read file failed (./Calvorin.tpu: File too large)\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file + c.content);
        const ProgramFolder world;
        const auto bad = world.folder / c.file;
        writeFile(world.folder / "app.hex", kHex);
        writeFile(world.folder / "out.mot", "old");
        std::filesystem::remove_all(bad);
        if (c.content == "/") {
            std::filesystem::create_directory(bad);
        } else if (!c.content.empty()) {
            writeFile(bad, c.content);
        }
        if (c.content == ">") {
            writeFile(world.folder / "Device" / "huge.dev", "");
            for (const auto& huge : {bad, world.folder / "Device" / "huge.dev"}) {
                std::filesystem::resize_file(huge, 1ULL << 31);
            }
        }
        const RunResult result = world.run({"app.hex", "-FileSaveAsout.mot", "-Exit"}, [&] {
            std::filesystem::current_path(world.folder.path());
        });
        EXPECT_EQ(result.exitCode, 1);
        std::string errors;
        for (const std::string& error : result.errors) {
            errors +=
                std::regex_replace(error, std::regex(world.folder.path().string()), ".") + "\n";
        }
        EXPECT_EQ(errors, c.errors);
        EXPECT_EQ(readFile(world.folder / "out.mot"), "old");
        EXPECT_EQ(result.err.find("huge.dev: the file is too large)\n") == std::string::npos,
                  c.content != ">");
        EXPECT_TRUE(c.content.size() < 2 || readFile(bad) == c.content);
    }
}

// A pipe is written and read as it comes; one that nobody serves is waited for until the run is
// ended.
TEST(WithoutChip, UsesPipesAndEndsWithinThem) {
    const ProgramFolder world;
    writeFile(world.folder / "app.hex", kHex);
    std::filesystem::create_symlink("/dev/stdout", world.folder / "out.hex");
    std::filesystem::create_symlink("/dev/stdin", world.folder / "in.hex");
    const std::string script = "cd " + world.folder.path().string() +
                               " && cat app.hex | ./calvorin in.hex -FileSaveAsout.hex -Exit | cat";
    Process piped({"/bin/sh", "-c", script}, world.folder / "run");
    EXPECT_EQ(piped.wait(), 0) << piped.err();
    EXPECT_EQ(piped.out(), kHex);
    EXPECT_EQ(readFile(world.folder / "Calvorin.tpu").find("File = "), std::string::npos);

    const std::string fifo = world.folder / "fifo.hex";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const std::pair<Strings, std::string> cases[] = {
        {{world.folder / "app.hex", "-FileSaveAs" + fifo, "-Exit"}, "Saving "},
        {{fifo, "-Exit"}, "Opening " + fifo},
    };
    for (const auto& [arguments, begun] : cases) {
        const int silent = begun == "Saving " ? -1 : open(fifo.c_str(), O_RDWR);
        Process process(world.command(arguments), world.folder / "run");
        EXPECT_TRUE(waitFor(
            [&process, text = begun] { return process.err().find(text) != std::string::npos; }));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        process.signal(SIGINT);
        EXPECT_EQ(process.wait(), 1) << process.err();
        EXPECT_NE(process.err().find("Interrupted\n"), std::string::npos) << process.err();
        close(silent);
    }
}

TEST(WithoutChip, ShowsControlCharactersOfAName) {
    const ProgramFolder world;
    const RunResult name = world.run({"\x1B\x9B\n.hex", "-Exit"});
    EXPECT_NE(name.err.find("\\x1B\\x9B\\x0A.hex"), std::string::npos) << name.err;
    const RunResult result = world.run({"-Bell\x07\xC2\x9B", "-Exit"});
    for (const std::string& text : {result.err, readFile(world.folder / "calvorin.log"),
                                    readFile(world.folder / "calvorin.err")}) {
        EXPECT_NE(text.find("Bell\\x07\\xC2\\x9B"), std::string::npos) << text;
        EXPECT_EQ(text.find_first_of("\x1B\x07\x9B"), std::string::npos) << text;
    }
}

#ifdef CALVORIN_HARDENED
TEST(WithoutChip, IsBuiltHardened) {
    const ProgramFolder world;
    for (const char* name : {"calvorin", "calvorin-sim"}) {
        const std::string program = builtFolder() / name;
        Process readelf({"/bin/sh", "-c", "readelf -W -l -d --dyn-syms " + program},
                        world.folder / "run");
        ASSERT_EQ(readelf.wait(), 0) << readelf.err();
        for (const char* part : {"GNU_RELRO", "BIND_NOW", "NOW PIE", "__stack_chk_fail", "_chk@"}) {
            EXPECT_NE(readelf.out().find(part), std::string::npos) << name << ": " << part;
        }
        const std::string code = readFile(program);
        int targets = 0; // of indirect jumps, marked
        for (size_t at = 0; (at = code.find("\xF3\x0F\x1E\xFA", at)) != std::string::npos; ++at) {
            ++targets;
        }
#ifdef __CET__
        EXPECT_GT(targets, 100) << name;
#endif
    }
}
#endif

TEST(WithoutChip, RefusesDamagedRecordsUnlessTheLineAcceptsThem) {
    const ProgramFolder world;
    const std::string path = world.folder / "bad.mot";
    const std::string out = world.folder / "out.mot";
    writeFile(path, "S10510000102E7\r\nS1051002010200\r\nS10510040304DF\r\n");
    RunResult result = world.run({path, "-FileSaveAs" + out, "-Exit"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, Strings{"Error in line 2: CheckSum error !"});
    EXPECT_FALSE(std::filesystem::exists(out));

    result = world.run({path, "--accept-damaged", "-FileSaveAs" + out, "-Exit"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("Checksum error !: Continue and ignore ? (line 2) [not asked]\n"),
              std::string::npos)
        << result.err;
    EXPECT_EQ(readFile(out), "S10510000102E7\r\nS10510040304DF\r\nS9030000FC\r\n");
}

TEST(WithoutChip, WorksInAFolderThatCannotBeWritten) {
    const ProgramFolder world;
    const TempFolder writable;
    std::filesystem::permissions(writable.path(), std::filesystem::perms::all);
    writeFile(world.folder / "a.hex", kHex);
    std::filesystem::permissions(world.folder.path(), std::filesystem::perms(0555));
    const std::string out = writable / "out.mot";
    Process process(world.command({world.folder / "a.hex", "-FileSaveAs" + out, "-Exit"}),
                    writable / "run", [&] {
                        unsetenv("XDG_CONFIG_HOME");
                        unsetenv("XDG_STATE_HOME");
                        setenv("HOME", writable.path().c_str(), 1);
                        becomeNobody();
                    });
    EXPECT_EQ(process.wait(), 0) << process.err();
    for (const char* kept :
         {".local/state/calvorin/calvorin.log", ".local/state/calvorin/Calvorin.tpu",
          ".config/calvorin/calvorin.ini"}) {
        EXPECT_TRUE(std::filesystem::exists(writable / kept)) << kept;
    }
    EXPECT_EQ(ProgramFolder::lines(readFile(out)).size(), 2U);
    EXPECT_FALSE(std::filesystem::exists(world.folder / "calvorin.log"));
    std::filesystem::permissions(world.folder.path(), std::filesystem::perms(0755));
}
