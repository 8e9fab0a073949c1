#include "shell/cmdline.h"
#include "shell/cmdline_commands.h"
#include "shell/cmdline_line.h"
#include "shell/cmdline_table.h"
#include "shell/command_ids.h"
#include "shell/shell_world.h"

#include <gtest/gtest.h>
#include <regex>

namespace {

using Strings = std::vector<std::string>;

// With the program's own dispatcher and another device in front of the selected one.
struct CmdlineWorld : ShellWorld {
    CmdlineWorld()
        : ShellWorld("Device = \"VT-2\"\nManufacturer = \"Acme\"\nBank = 0, 100, 100, 100\n"
                     "IDLenMin = 2\nIDLenMax = 3\n") {
        select(kHead + "Bank = 100, 100, 200, 100\n");
        DEVPROPS_SelectAllBlocks();
        CMDLINE_SetDispatcher(CMDLINE_RunCommand);
    }
};

// As start-up does; whether the line was accepted.
bool process(const Strings& arguments) {
    LINE_SetKindOfRun(arguments);
    return CMDLINE_Read(arguments) && CMDLINE_Apply();
}

} // namespace

// With windows what is understood of a line takes effect; a run that nobody watches does nothing of
// a line that it does not understand to its end.
TEST(Cmdline, ReportsWhatIsWrongWithAnArgument) {
    enum In { both, windows, emptyImage, unattended };
    const struct {
        Strings arguments;
        const char* reports; // "|" between them
        In in = both;        // `emptyImage`: with windows, when its turn comes
    } cases[] = {
        {{"-optionscomport2"},
         "\"optionscomport2\" is not a valid command ! (did you mean -OptionsCOMPort?)"},
        {{"-verify"}, "\"verify\" is not a valid command ! (did you mean -TargetVerify?)"},
        {{"--TargetAtuo"}, "\"-TargetAtuo\" is not a valid command ! (did you mean -TargetAuto?)"},
        {{"--list-ports"}, "\"-list-ports\" is not a valid command ! (--list-ports stands alone)"},
        {{"-Nonsense"}, "\"Nonsense\" is not a valid command !"},
        {{"-"}, "\"\" is not a valid command !"},
        {{"-OptionsCOMPortftp://a"}, "there is no kind of port called ftp"},
        {{"-OptionsCOMPort"}, "CMDLINE_GetHexValue: Missing value"},
        {{"-OptionsCOMPort2x"}, "CMDLINE_GetDecValue: Not a decimal value"},
        {{"-OptionsPWAdrCountxyz"}, "CMDLINE_GetHexValue: Not a hex value"},
        {{"-OptionsPWAdrCount,1"}, "Not a hex value"},
        {{"-OptionsPWAdrCount12345678901"}, "CMDLINE_GetHexValue: Not a hex value"},
        {{"-OptionsPWAdrCount100000010"}, "OptionsPWAdrCount has to be within 0 - FFFFFF"},
        {{"-OptionsCOMPort4294967298"}, "OptionsCOMPort has to be within 1 - 20"},
        {{"-OptionsCOMBaudrate-9600"}, "OptionsCOMBaudrate has to be within 1 - 1000000"},
        {{"-OptionsPWPassword"}, "CMDLINE_GetString: Missing string"},
        {{"-OptionsPWPassword0A1"}, "Odd length is illegal"},
        {{"-OptionsTargetDevicevt-1"},
         "The devicename 'vt-1' was unknown.\nPlease check your configuration!\n\n|Device not set!",
         windows},
        {{"-OptionsTargetSelBlocks1;2"}, "Separator has to be ,"},
        {{"-OptionsTargetSelBlocks1"}, "Separator has to be ,"},
        {{"-OptionsTargetSelBlocks1,2-1"}, "Start block must be <= end block"},
        {{"-OptionsTargetSelBlocks1,0;1"}, "Illegal separator"},
        {{"-OptionsTargetSelBlocks1,0-1;2"}, "Separator has to be ,"},
        {{"-OptionsTargetSelBlocks1,0,4294967296"},
         "Block 4294967296 does not exist, the device has 3 blocks (from 0)"},
        {{"-OptionsTargetSelBlocks1,x"}, "CMDLINE_GetDecValue: Not a decimal value"},
        {{"-FileMergex.hex"}, "No file currently loaded", emptyImage},
        {{"-FileSaveAsx.hex"}, "Nothing to save", emptyImage},
        {{"-EditDeleteRange0-1"}, "Nothing to delete", emptyImage},
        {{"-EditRelocate10"}, "Nothing to relocate", emptyImage},
        {{"-TargetProgram"}, "Nothing to do", emptyImage},
        {{"-TargetVerify"}, "Nothing to do", emptyImage},
        {{"-TargetReadBack10"}, "Separator has to be ,"},
        {{"-TargetReadBack10,1"}, "End Address < Start Address!"},
        {{"-FileSaveAsout.txt"}, "Invalid file extension, use .MOT or .HEX"},
        {{"-FileSaveAs"}, "CMDLINE_GetString: Missing string"},
        {{"-EditDeleteRange2000-1000"}, "Start address has to be <= End address !"},
        {{"-EditDeleteRange2000,3000"}, "Separator has to be -"},
        {{"-EditRelocatex"},
         "CMDLINE_GetHexValue: Not a hex value|-relocate needs 1 Hex parameter"},
        {{"-EditRelocate-20"},
         "Relocation would move data beyond the end of the address space",
         windows},
        {{"-FileMerge/none.hex"}, "File not found (/none.hex: No such file or directory)", windows},
        {{"a.hex", "b.hex"}, "Only one file can be named, the first is \"a.hex\"", unattended},
        {{""}, "An empty argument names no file", unattended},
        {{"-OptionsCOMPort2-3"}, "\"-3\" behind the value is too much", unattended},
        {{"-OptionsTargetSpeed-"}, "CMDLINE_GetDecValue: Not a decimal value", unattended},
        {{"-OptionsPWFillFF256"}, "OptionsPWFillFF has to be within -128 - 127", unattended},
        {{"-OptionsTargetDevicevt-1"},
         "The devicename 'vt-1' was unknown.\nPlease check your configuration!|Device not set!",
         unattended},
        {{"-OptionsTargetSelBlocks1,0-3"},
         "Block 3 does not exist, the device has 3 blocks (from 0)"},
        {{"-OptionsTargetSelBlocks2,0"},
         "The first value has to be 1, to select the blocks behind it, or 0",
         unattended},
        {{"-OptionsTargetDeviceVT-2", "-OptionsTargetSelBlocks1,2"},
         "Block 2 does not exist, the device has 2 blocks (from 0)",
         unattended},
        {{"-OptionsTargetDeviceVT-2", "-OptionsPWPassword01"},
         "Password too short. Minimum 2 bytes",
         unattended},
        {{"-OptionsTargetDeviceVT-2", "-OptionsPWPassword01020304"},
         "Password too long. Maximum 3 bytes",
         unattended},
        {{"-OptionsPWPassword-1"}, "Not a hex value", unattended},
        {{"-OptionsPWPassword01,02"}, "\",02\" behind the value is too much", unattended},
        {{"-TargetAutoVerify"}, "TargetAuto takes no argument", unattended},
        {{"-?x"}, "? takes no argument", unattended},
        {{"-EditRelocate100000010"},
         "The offset has to be within -7FFFFFFF - 7FFFFFFF",
         unattended},
        {{"-EditDeleteRange0-100000000"}, "An address has to be within 0 - FFFFFFFF", unattended},
        {{"-TargetReadBack0,1,2"}, "\",2\" behind the value is too much", unattended},
        {{"-FileSaveAsx.hex,y"}, "\",y\" behind the value is too much", unattended},
        {{"-FileMerge"}, "CMDLINE_GetString: Missing string", unattended},
        {{"-Exit", "-TargetAuto"},
         "\"TargetAuto\" stands behind Exit and would not run",
         unattended},
        {{"-FileMerge" + std::string(kMaxArgument + 1, 'x')},
         "The argument of \"FileMerge\" is too long: at most 599 characters"},
        {{"-FilePatch10"},
         "A patch is ADDRESS=HEXBYTES or ADDRESS=@FILE, the address within 0 - FFFFFFFF"},
        {{"-FilePatch10=0"}, "Odd length is illegal"},
        {{"-FilePatch10="}, "Not a hex value"},
        {{"-FilePatch10=@/none"}, "File not found (/none)"},
        {{"-FilePatchFFFFFFFF=0102"}, "A patch of 2 bytes at FFFFFFFF would end behind FFFFFFFF"},
        {{"--watch"}, "--watch needs a FILE to watch"},
        {{"/dev/null", "--watch"},
         "--watch needs a file that can change, /dev/null is a pipe or a device"},
        {{"a.hex", "-FileSaveAsa.hex", "--watch"},
         "--watch would never rest: a.hex is saved by the line itself"},
    };
    const std::regex kNamed(R"( \(argument "[^"]*"\)|argument "[^"]*", )");
    for (const auto& c : cases) {
        for (const bool isUnattended : {false, true}) {
            if (c.in != both && (c.in == unattended) != isUnattended) {
                continue;
            }
            CmdlineWorld world;
            ShellWorld::load(0x10, std::vector<uint8_t>(c.in == emptyImage ? 0 : 0x30));
            SIO_SetPort(3);
            Strings arguments = c.arguments;
            const std::string named = "argument \"" + arguments.back() + "\"";
            SCOPED_TRACE(named);
            arguments.insert(arguments.begin(), {"-OptionsCOMPort7", "-OptionsPWPassword0A0B"});
            if (isUnattended) {
                arguments.emplace_back("-Exit");
            }
            EXPECT_EQ(process(arguments), !isUnattended);
            CMDLINE_Poll();
            for (const std::string& text : world.reports) {
                EXPECT_EQ(text.find(named) != std::string::npos, isUnattended) << text;
            }
            EXPECT_EQ(std::regex_replace(world.screen.take(world.reports, '|'), kNamed, ""),
                      c.reports);
            EXPECT_EQ(RUN_GetExitCode(), 1);
            EXPECT_EQ(SIO_GetPort(), isUnattended ? 3U : 7U);
            EXPECT_EQ(PASSWORD_GetLen(), isUnattended ? 0U : 2U);
            EXPECT_EQ(DEVICE_GetName(), "VT-1");
            EXPECT_FALSE(CMDLINE_IsRunning());
        }
    }
}

TEST(Cmdline, AppliesOptionsAtOnce) {
    const CmdlineWorld world;
    DEVPROPS_SelectBlock(1, false);
    process({"-OptionsCOMPort7", "/OptionsCOMBaudrate31250", "-OptionsPWPassword0aB1",
             "-OptionsPWAdrCountFFDF", "-OptionsSettingsReset2", "-OptionsTargetSpeed8000",
             "-OptionsTargetSelBlocks0,0,1-2", "-OptionsTargetSelBlocks1,2"});
    EXPECT_EQ(world.reports, Strings{});
    EXPECT_EQ(SIO_GetPort(), 7U);
    for (const char* device : {"/dev/serial/by-id/usb-a,b", "rfc2217://host:2001"}) {
        process({std::string("-OptionsCOMPort") + device});
        EXPECT_EQ(SIO_PortName(), device);
    }
    EXPECT_EQ(world.reports, Strings{});
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
    CMDLINE_SetDispatcher([&](int command) {
        ran.push_back(command);
        CMDLINE_Next();
    });
    ShellWorld::load(0, {1});
    EXPECT_TRUE(process(
        {"-TargetEraseChip", "/TargetCheckBlankBlocks", "app.hex", "-EditRelocate10", "-Exit"}));
    EXPECT_EQ(HEXDATA_GetFirstAddr(), 0U) << "nothing runs before its turn";
    EXPECT_EQ(CMDLINE_ProgramFile(), "app.hex");
    EXPECT_TRUE(CMDLINE_IsExitQueued());
    EXPECT_TRUE(RUN_IsUnattended());
    bool shown = false; // that the commands may be chosen again
    FRONTEND_Get().updateMenu = [&shown] { shown = !CMDLINE_IsRunning(); };
    while (CMDLINE_IsRunning()) {
        CMDLINE_Poll();
    }
    EXPECT_TRUE(shown);
    EXPECT_EQ(ran, (std::vector<int>{CMD_TARGET_ERASE_CHIP, CMD_TARGET_BLANK_CHECK_BLOCKS,
                                     CMD_EDIT_RELOCATE, CMD_EXIT}));

    RUN_SetExitCode(1);
    CMDLINE_RunCommand(CMD_TARGET_VERIFY);
    EXPECT_EQ(world.reports, Strings{});
    CMDLINE_RunCommand(CMD_EXIT);
    EXPECT_TRUE(SESSION_Get().quit);
    process(Strings(kMaxQueuedCommands + 1, "-TargetVerify"));
    EXPECT_EQ(world.reports, Strings{"Too many commands, \"TargetVerify\" is not run: at most 20 "
                                     "can be queued"});
}

TEST(Cmdline, TakesTheProgramFileAtAnyPlace) {
    const CmdlineWorld world;
    const std::string path = world.folder / "a.hex";
    const auto fileOf = [](const Strings& arguments) {
        process(arguments);
        return CMDLINE_ProgramFile();
    };
    EXPECT_EQ(fileOf({path}), std::nullopt) << "an option that nobody knows, as there is no file";
    EXPECT_EQ(world.reports.size(), 1U);
    writeFile(path, "");
    EXPECT_EQ(fileOf({path}), path);
    EXPECT_EQ(fileOf({"-OptionsCOMPort1", path, "-TargetEraseChipX", "b.hex"}), path);
    EXPECT_EQ(fileOf({""}), "") << "a file that cannot be opened, and not no file";
    EXPECT_EQ(world.reports.size(), 1U);
}

TEST(Cmdline, KnowsTheWordsOfTheRunAtAnyPlace) {
    const CmdlineWorld world;
    EXPECT_TRUE(
        process({"-Exit", "--isolated", "a.hex", "--accept-damaged", "-OptionsCOMPort1", "-Exit"}));
    EXPECT_TRUE(RUN_IsIsolated() && RUN_AcceptsDamaged() && RUN_IsUnattended());
    EXPECT_EQ(CMDLINE_ProgramFile(), "a.hex");
    EXPECT_TRUE(process({"-OptionsCOMPort1"}));
    EXPECT_FALSE(RUN_IsIsolated() || RUN_AcceptsDamaged() || RUN_IsUnattended());
    EXPECT_EQ(world.reports, Strings{});
}

// Wherever the device stands on the line, blocks and password are its own.
TEST(Cmdline, SelectsTheDeviceFirstInAnUnattendedRun) {
    const CmdlineWorld world;
    EXPECT_TRUE(process(
        {"-OptionsTargetSelBlocks0,0", "-OptionsPWFillFF1", "-OptionsTargetDeviceVT-2", "-Exit"}));
    EXPECT_EQ(DEVICE_GetName(), "VT-2");
    EXPECT_FALSE(DEVPROPS_IsBlockSelected(0));
    EXPECT_TRUE(DEVPROPS_IsBlockSelected(1));
    EXPECT_EQ(PASSWORD_GetLen(), 3U);
    EXPECT_EQ(world.reports, Strings{});
}
