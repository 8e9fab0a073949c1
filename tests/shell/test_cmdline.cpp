#include "shell/cmdline.h"
#include "shell/cmdline_commands.h"
#include "shell/cmdline_table.h"
#include "shell/command_ids.h"
#include "shell/shell_world.h"
#include "support/paths.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace {

using Strings = std::vector<std::string>;

// With the program's own dispatcher.
struct CmdlineWorld : ShellWorld {
    CmdlineWorld() { CMDLINE_SetDispatcher(CMD_EXIT, CMDLINE_RunCommand); }
};

} // namespace

TEST(Cmdline, ReportsWhatIsWrongWithAnArgument) {
    const struct {
        const char* argument;
        Strings reports;
    } emptyImage[] =
        {
            {"-optionscomport2", {"\"optionscomport2\" is not a valid command !"}},
            {"-", {"\"\" is not a valid command !"}},
            {"-OptionsCOMPort", {"CMDLINE_GetHexValue: Missing value"}},
            {"-OptionsCOMPortx", {"CMDLINE_GetDecValue: Not a decimal value"}},
            {"-OptionsCOMPort2x", {"CMDLINE_GetDecValue: Not a decimal value"}},
            {"-OptionsPWAdrCountxyz", {"CMDLINE_GetHexValue: Not a hex value"}},
            {"-OptionsPWAdrCount,1", {"Not a hex value"}},
            {"-OptionsPWAdrCount12345678901", {"CMDLINE_GetHexValue: Not a hex value"}},
            {"-OptionsPWPassword", {"CMDLINE_GetString: Missing string"}},
            {"-OptionsPWPassword0A1", {"Odd length is illegal"}},
            {"-OptionsTargetDeviceXY",
             {"The devicename 'XY' was unknown.\nPlease check your configuration!\n\n",
              "Device not set!"}},
            {"-OptionsTargetSelBlocks1;2", {"Separator has to be ,"}},
            {"-OptionsTargetSelBlocks1", {"Separator has to be ,"}},
            {"-OptionsTargetSelBlocks1,2-1", {"Start block must be <= end block"}},
            {"-OptionsTargetSelBlocks1,0;1", {"Illegal separator"}},
            {"-OptionsTargetSelBlocks1,0-1;2", {"Separator has to be ,"}},
            {"-OptionsTargetSelBlocks1,0,3",
             {"Block 3 does not exist, the device has 3 blocks (from 0)"}},
            {"-OptionsTargetSelBlocks1,x", {"CMDLINE_GetDecValue: Not a decimal value"}},
            {"-FileMergex.hex", {"No file currently loaded"}},
            {"-FileSaveAsx.hex", {"Nothing to save"}},
            {"-EditDeleteRange0-1", {"Nothing to delete"}},
            {"-EditRelocate10", {"Nothing to relocate"}},
            {"-TargetReadBack10", {"Separator has to be ,"}},
            {"-TargetReadBack10,1", {"End Address < Start Address!"}},
            {"-TargetProgram", {"Nothing to do"}},
            {"-TargetVerify", {"Nothing to do"}},
        },
      loaded[] = {
          {"-FileSaveAsout.txt", {"Invalid file extension, use .MOT or .HEX"}},
          {"-FileSaveAs", {"CMDLINE_GetString: Missing string"}},
          {"-EditDeleteRange2000-1000", {"Start address has to be <= End address !"}},
          {"-EditDeleteRange2000,3000", {"Separator has to be -"}},
          {"-EditRelocatex",
           {"CMDLINE_GetHexValue: Not a hex value", "-relocate needs 1 Hex parameter"}},
          {"-EditRelocate-20", {"Relocation would move data beyond the end of the address space"}},
          {"-FileMerge/none.hex", {"File not found"}},
      };
    const auto check = [](const auto& cases, size_t bytes) {
        for (const auto& c : cases) {
            const CmdlineWorld world;
            ShellWorld::load(0x10, std::vector<uint8_t>(bytes));
            CMDLINE_Process({c.argument});
            CMDLINE_Poll();
            EXPECT_EQ(world.reports, c.reports) << c.argument;
        }
    };
    check(emptyImage, 0);
    check(loaded, 0x30);
}

TEST(Cmdline, AppliesOptionsAtOnce) {
    const CmdlineWorld world;
    DEVPROPS_SelectBlock(1, false);
    CMDLINE_Process({"-OptionsCOMPort7", "/OptionsCOMBaudrate31250", "-OptionsPWPassword0aB1",
                     "-OptionsPWAdrCountFFDF", "-OptionsSettingsReset2", "-OptionsTargetSpeed8000",
                     "-OptionsTargetSelBlocks0,0,1-2", "-OptionsTargetSelBlocks1,2"});
    EXPECT_EQ(world.reports, Strings{});
    EXPECT_EQ(SIO_GetPort(), 7U);
    EXPECT_EQ(SIO_GetBaudrate(), 31250U);
    EXPECT_EQ(PASSWORD_GetBytes(), (std::vector<uint8_t>{0x0A, 0xB1}));
    EXPECT_TRUE(PASSWORD_GetHexmode());
    EXPECT_EQ(PASSWORD_GetAdrCount(), 0xFFDFU);
    EXPECT_TRUE(DEVPROPS_GetResetByPC());
    EXPECT_EQ(DEVPROPS_GetSpeed(), 8000);
    EXPECT_FALSE(DEVPROPS_IsBlockSelected(0) || DEVPROPS_IsBlockSelected(1));
    EXPECT_TRUE(DEVPROPS_IsBlockSelected(2));
}

TEST(Cmdline, RunsQueuedCommandsInOrderAndOnlyExitAfterAFailure) {
    const CmdlineWorld world;
    std::vector<int> ran;
    CMDLINE_SetDispatcher(CMD_EXIT, [&](int command) {
        ran.push_back(command);
        CMDLINE_Next();
    });
    EXPECT_EQ(CMDLINE_Process({"app.hex", "-TargetEraseChipX", "-Exit", "/TargetCheckBlankBlocks"}),
              "app.hex");
    EXPECT_TRUE(CMDLINE_IsExitQueued());
    EXPECT_TRUE(RUN_IsUnattended());
    while (CMDLINE_IsRunning()) {
        CMDLINE_Poll();
    }
    EXPECT_EQ(ran,
              (std::vector<int>{CMD_TARGET_ERASE_CHIP, CMD_EXIT, CMD_TARGET_BLANK_CHECK_BLOCKS}));

    RUN_SetExitCode(1);
    CMDLINE_RunCommand(CMD_TARGET_VERIFY);
    EXPECT_EQ(world.reports, Strings{});
    CMDLINE_RunCommand(CMD_EXIT);
    EXPECT_TRUE(SESSION_Get().quit);
}

TEST(Cmdline, RefusesWhatExceedsItsLimits) {
    const CmdlineWorld world;
    Strings arguments(kMaxQueuedCommands + 1, "-TargetVerify");
    arguments.insert(arguments.begin(), "-FileMerge" + std::string(kMaxArgument + 1, 'x'));
    CMDLINE_Process(arguments);
    EXPECT_EQ(
        world.reports,
        (Strings{"The argument of \"FileMerge\" is too long: at most 599 characters",
                 "Too many commands, \"TargetVerify\" is not run: at most 20 can be queued"}));
}

TEST(Cmdline, TakesTheFirstArgumentForTheProgramFileWhenItCanBeOne) {
    const CmdlineWorld world;
    const std::string path = world.folder / "a.hex";
    EXPECT_EQ(CMDLINE_Process({path}), std::nullopt);
    EXPECT_EQ(world.reports.size(), 1U);
    writeFile(path, "");
    EXPECT_EQ(CMDLINE_Process({path}), path);
    EXPECT_EQ(CMDLINE_Process({"-OptionsCOMPort1", path}), std::nullopt);
    EXPECT_EQ(CMDLINE_Process({""}), "") << "a file that cannot be opened, and not no file";
}

// The tables of docs/command-line.md have a row for all that the help text lists, beginning with
// its name, argument and effect, and no other.
TEST(Cmdline, IsDocumentedAsItsHelpSays) {
    std::set<std::string> documented;
    std::set<std::string> helped;
    std::istringstream document(readFile(builtFolder() / "command-line.md"));
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with("| `-")) {
            documented.insert(line);
        }
    }
    for (const CmdlineEntry& entry : CMDLINE_Table()) {
        const auto help =
            std::string(entry.help).substr(std::string_view(entry.help).rfind('\t') + 1);
        const size_t behind = help.find("> ") + 1; // 0: no argument
        const std::string argument = behind == 0 ? "" : "`" + help.substr(0, behind) + "` ";
        helped.insert(std::string("| `-") + entry.name + "` | " + argument + "| " +
                      help.substr(behind == 0 ? 0 : behind + 1) + " |");
    }
    ASSERT_EQ(documented.size(), helped.size());
    auto line = documented.begin();
    for (const std::string& row : helped) {
        EXPECT_EQ((line++)->substr(0, row.size()), row);
    }
}
